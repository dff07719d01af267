// With which compilers the package is tried.
#include "Compilers.h"

#include <gmock/gmock.h>

#include "support/TemporaryRoot.h"

namespace DAX::Tests {
namespace {

using namespace testing;

class Clangs : public Test {
protected:
    void addCommand(const std::string& name, const std::string& script) {
        root.write(name, "#!/bin/sh\n" + script + "\n");
        std::filesystem::permissions(root / name, std::filesystem::perms::owner_all);
    }

    std::string command(const std::string& name) const { return (root / name).string(); }

    // Found beside a folder that does not exist.
    std::vector<std::string> found() const { return clangs(command("missing") + ":" + root.path().string()); }

    TemporaryRoot root;
};

TEST_F(Clangs, AreFoundWhateverTheirVersion) {
    for (const char* const name : {"clang++-9", "clang++", "clang++-14", "clang++-format", "clang", "g++"}) {
        addCommand(name, "exit 0");
    }
    EXPECT_THAT(found(), ElementsAre(command("clang++"), command("clang++-14"), command("clang++-9")));
}

TEST_F(Clangs, ThatDoNotRunAreNone) {
    addCommand("clang++", "exit 1");
    addCommand("clang++-99", "exit 0");
    EXPECT_THAT(found(), ElementsAre(command("clang++-99")));
}

} // namespace
} // namespace DAX::Tests
