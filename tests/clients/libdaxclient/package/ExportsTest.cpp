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

// A program may have another version of Boost, with the same names: nothing of it may come from here. The loader gives
// unique symbols (u) to the whole process, whatever else hides them.
TEST(Exports, AreTheLibrarysOwnAndNoneIsOfTheWholeProcess) {
    for (const std::string& line : linesOf(outputOf({"nm", "-D", "--defined-only", "--demangle", LIBRARY}))) {
        EXPECT_THAT(line, ContainsRegex("^[0-9a-f]+ ([TVDR] (typeinfo for |typeinfo name for |vtable for )?dax::|"
                                        "A DAXCLIENT_1)"));
    }
}

// With a shared Boost, the loader looks for its symbols in the program and its libraries first.
TEST(Exports, TakeBoostInsideOrFromItsSharedLibraries) {
    const std::string dynamic = outputOf({"readelf", "-W", "--dynamic", LIBRARY});
    if (dynamic.find("[libboost_") != std::string::npos) {
        GTEST_SKIP() << "this machine's static Boost cannot go into a shared library";
    }
    EXPECT_THAT(outputOf({"nm", "-D", "--undefined-only", "--demangle", LIBRARY}), Not(HasSubstr("boost::")));
}

} // namespace
} // namespace DAX::Tests
