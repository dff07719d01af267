// What the shared library shows to others.
#include <algorithm>
#include <set>

#include <gmock/gmock.h>

#include "Installed.h"
#include "support/Sanitizer.h"

namespace DAX::Tests {
namespace {

using namespace testing;

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

// The names that nm shows behind the address and the type, each once: a constructor has several symbols.
std::string exportedSymbols() {
    std::set<std::string> names;
    for (const std::string& line : linesOf(outputOf({"nm", "-D", "--defined-only", "--demangle", LIBRARY}))) {
        const std::string name = line.substr(line.find(' ', line.find(' ') + 1) + 1);
        if (name != "DAXCLIENT_1") { // the version itself
            names.insert(name);
        }
    }
    std::string text;
    for (const std::string& name : names) {
        text += name + "\n";
    }
    return text;
}

TEST(Exports, AreThoseOfTheList) {
    const std::filesystem::path list = std::string(SOURCE_FOLDER) + "/clients/libdaxclient/exported-symbols.txt";
    EXPECT_EQ(exportedSymbols(), textOf(list))
        << "Programs are linked with these names. What is gone or changed needs a new SONAME; what is new belongs into "
        << list << ".";
}

TEST(Exports, BelongToOneVersionOfTheInterface) {
    EXPECT_THAT(linesOf(exportedSymbols()), Each(EndsWith("@@DAXCLIENT_1")));
}

TEST(Exports, AreUnderTheNameThatProgramsAskFor) {
    const std::string dynamic = outputOf({"readelf", "-W", "--dynamic", LIBRARY});
    EXPECT_THAT(dynamic, HasSubstr("Library soname: [libdaxclient.so.1]"));
    for (const std::string library :
         {"vconf", "dlog", "MetricLogger", "DAXProductionConfig", "lmdb", "systemd", "glib"}) {
        EXPECT_THAT(dynamic, Not(HasSubstr("[lib" + library))) << "it needs a library of the platform";
    }
}

TEST(Exports, NeedNothingOfThePlatform) {
    if (HAS_SANITIZER) {
        GTEST_SKIP() << "the sanitizer's functions are missing until the program is linked";
    }
    const std::string missing = outputOf({"nm", "-D", "--undefined-only", "--demangle", LIBRARY});
    EXPECT_THAT(missing, Not(AnyOf(HasSubstr("dlog"), HasSubstr("MetricLogFramework"), HasSubstr("DAX::"))));
}

TEST(Header, AndTheExamplesIncludeTheStandardLibraryOnly) {
    const Installed installed;
    const std::filesystem::path sources = installed.folderOf("upgrade.cpp");
    for (const std::string& compiler : compilers()) {
        for (const char* const example : {"upgrade.cpp", "lock.cpp", "patient_service.cpp"}) {
            const std::string files =
                outputOf({compiler, "-std=c++17", "-M", "-I" + (installed.prefix() / "include").string(),
                          (sources / example).string()});
            EXPECT_THAT(files, HasSubstr("/dax/client.h"));
            EXPECT_THAT(files, Not(AnyOf(HasSubstr("boost"), HasSubstr("dbus"), HasSubstr(SOURCE_FOLDER))));
        }
    }
}

} // namespace
} // namespace DAX::Tests
