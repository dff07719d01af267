// The manual pages tell of everything that the programs know.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include <gmock/gmock.h>

#include "DAXCoreSimulator/Scenario.h"
#include "host/DeviceFacts.h"
#include "support/CommandHelp.h"
#include "support/Process.h"

namespace DAX::Tests {
namespace {

namespace fs = std::filesystem;
using Words = std::set<std::string>;

const fs::path SOURCES(SOURCE_FOLDER);
const fs::path PAGES = SOURCES / "docs/man";

std::string textOf(const fs::path& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

// What stands between asterisks in a line: "*-h*, *--help*" has two.
std::vector<std::string> boldIn(const std::string& line) {
    std::vector<std::string> found;
    const std::regex bold("\\*([^*]*)\\*");
    for (std::sregex_iterator at(line.begin(), line.end(), bold), end; at != end; ++at) {
        found.push_back((*at)[1]);
    }
    return found;
}

// A term of a page, such as an option: the line that is followed by an indented one, and that text.
struct Term {
    std::string line;
    std::string text;
};

// A page in its source: the terms under each heading.
std::map<std::string, std::vector<Term>> termsOf(const std::string& page) {
    std::map<std::string, std::vector<Term>> terms;
    std::istringstream lines(textOf(PAGES / (page + ".scd")));
    std::string heading;
    std::string before;
    for (std::string line; std::getline(lines, line); before = line) {
        if (line.compare(0, 2, "# ") == 0) {
            heading = line.substr(2);
        } else if (!line.empty() && line[0] == '\t') {
            if (!before.empty() && before[0] != '\t') {
                terms[heading].push_back({before, ""});
            }
            terms[heading].back().text += (terms[heading].back().text.empty() ? "" : " ") + line.substr(1);
        }
    }
    return terms;
}

Words boldWordsOf(const std::vector<Term>& terms) {
    Words words;
    for (const Term& term : terms) {
        for (const std::string& word : boldIn(term.line)) {
            words.insert(word);
        }
    }
    return words;
}

// The options in the line of the command: "*lock hold* [*--name* _NAME_]".
Words optionsInLineOf(const std::string& command, const std::vector<Term>& terms) {
    Words options;
    for (const Term& term : terms) {
        const auto bold = boldIn(term.line);
        if (!bold.empty() && bold.front() == command) {
            options.insert(bold.begin() + 1, bold.end());
        }
    }
    return options;
}

bool hasTerm(const std::string& command, const std::vector<Term>& terms) {
    for (const Term& term : terms) {
        const auto bold = boldIn(term.line);
        if (!bold.empty() && bold.front() == command) {
            return true;
        }
    }
    return false;
}

// Each command of the program has a line with its options, and each option has a text.
void expectCommandsIn(const std::string& page, const std::string& program) {
    const auto terms = termsOf(page);
    const Words explained = boldWordsOf(terms.at("OPTIONS"));
    const auto commands = commandsOf(std::string(DAX_PROGRAMS) + "/" + program);
    ASSERT_GT(commands.size(), 1U);
    for (const auto& [command, help] : commands) {
        EXPECT_FALSE(help.options.empty()) << command;
        for (const std::string& option : help.options) {
            EXPECT_EQ(explained.count(option), 1U) << page << " does not explain " << option;
        }
        if (command.empty() || (!help.commands.empty() && !hasTerm(command, terms.at("COMMANDS")))) {
            continue; // the program, and groups of commands
        }
        EXPECT_TRUE(hasTerm(command, terms.at("COMMANDS"))) << page << " does not tell of " << command;
        const Words listed = optionsInLineOf(command, terms.at("COMMANDS"));
        for (const std::string& option : help.options) {
            if (option != "--help" && option != "--json") {
                EXPECT_EQ(listed.count(option), 1U) << page << ": " << command << " does not list " << option;
            }
        }
    }
}

std::string typeOf(const KovanHost::FactValue& value) {
    return std::holds_alternative<bool>(value) ? "bool" : std::holds_alternative<int>(value) ? "int" : "string";
}

std::string written(const KovanHost::FactValue& value) {
    if (const bool* const flag = std::get_if<bool>(&value)) {
        return *flag ? "true" : "false";
    }
    const int* const number = std::get_if<int>(&value);
    return number != nullptr ? std::to_string(*number) : std::get<std::string>(value);
}

class ManualPage : public testing::TestWithParam<std::string> {};

TEST_P(ManualPage, IsWellFormed) {
    const std::string source = (PAGES / (GetParam() + ".scd")).string();
    const FinishedRun made =
        run({{"sh", "-c", "command -v scdoc >/dev/null || exit 9; scdoc <\"$0\"", source}, {}, {}, {}});
    if (made.end == ProcessEnd::exited(9)) {
        GTEST_SKIP() << "this machine has no scdoc";
    }
    EXPECT_EQ(made.errors, "");
    ASSERT_EQ(made.end, ProcessEnd::exited(0));

    // What scdoc writes has paragraphs that are empty.
    const FinishedRun checked =
        run({{"sh", "-c",
              "command -v mandoc >/dev/null || exit 9; mandoc -Tlint -Wwarning | grep -v 'skipping paragraph macro'"},
             {},
             made.output,
             {}});
    if (checked.end == ProcessEnd::exited(9)) {
        GTEST_SKIP() << "this machine has no mandoc";
    }
    EXPECT_EQ(checked.output, "");
    EXPECT_EQ(checked.errors, "");
}

// The name and the section are those of the file, and the page says what it is for.
TEST_P(ManualPage, HasTheNameOfItsFile) {
    const std::string name = GetParam().substr(0, GetParam().rfind('.'));
    const std::string section = GetParam().substr(GetParam().rfind('.') + 1);
    const std::string text = textOf(PAGES / (GetParam() + ".scd"));
    EXPECT_THAT(text, testing::StartsWith(name + "(" + section + ") \"DAXService\"\n\n# NAME\n\n" + name + " - "));
}

// Each page that is made is here, and each that is here is made.
TEST_P(ManualPage, IsMade) {
    EXPECT_THAT(textOf(PAGES / "CMakeLists.txt"), testing::HasSubstr(" " + GetParam() + " "));
}

std::vector<std::string> pages() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(PAGES)) {
        if (entry.path().extension() == ".scd") {
            names.push_back(entry.path().stem().string());
        }
    }
    return names;
}

INSTANTIATE_TEST_SUITE_P(Each, ManualPage, testing::ValuesIn(pages()),
                         [](const testing::TestParamInfo<std::string>& page) {
                             return std::regex_replace(page.param, std::regex("[^A-Za-z0-9]"), "_");
                         });

TEST(ManualPages, AreThere) {
    EXPECT_THAT(pages(), testing::UnorderedElementsAre("DAXCoreSimulator.1", "DAXService.8", "core-scenario.ini.5",
                                                       "daxctl.1", "device.ini.5", "kovanctl.1", "libdaxclient.3"));
}

TEST(ManualPages, ReferToPagesThatAreThere) {
    for (const std::string& page : pages()) {
        const std::string text = textOf(PAGES / (page + ".scd"));
        const std::regex reference("\\*([A-Za-z.-]+)\\*\\(([0-9])\\)");
        for (std::sregex_iterator at(text.begin(), text.end(), reference), end; at != end; ++at) {
            const std::string other = (*at)[1].str() + "." + (*at)[2].str();
            EXPECT_TRUE(fs::exists(PAGES / (other + ".scd"))) << page << " refers to " << other;
        }
    }
}

TEST(ManualPages, TellOfEveryCommandAndOptionOfDaxctl) {
    expectCommandsIn("daxctl.1", "daxctl");
}

TEST(ManualPages, TellOfEveryCommandAndOptionOfKovanctl) {
    expectCommandsIn("kovanctl.1", "kovanctl");
}

TEST(ManualPages, TellOfNoOptionThatKovanctlDoesNotKnow) {
    Words known = {"--version"};
    for (const auto& [command, help] : commandsOf(std::string(DAX_PROGRAMS) + "/kovanctl")) {
        known.insert(help.options.begin(), help.options.end());
    }
    Words explained = boldWordsOf(termsOf("kovanctl.1").at("OPTIONS"));
    explained.erase("-h");
    EXPECT_EQ(explained, known);
}

TEST(ManualPages, TellOfTheOptionsOfTheSimulatedCore) {
    Words explained = boldWordsOf(termsOf("DAXCoreSimulator.1").at("OPTIONS"));
    explained.erase("-h");
    EXPECT_EQ(explained, commandsOf(std::string(DAX_PROGRAMS) + "/DAXCoreSimulator").at("").options);
}

// The daemon has no help, so its source has to tell.
TEST(ManualPages, TellOfTheOptionsOfTheDaemon) {
    const std::string source = textOf(SOURCES / "src/Executables/DaemonHelpers/Implementation/DaemonHelpers.cpp");
    Words known;
    const std::regex option("\\(\"([a-z-]+)\", *options::");
    for (std::sregex_iterator at(source.begin(), source.end(), option), end; at != end; ++at) {
        known.insert("--" + (*at)[1].str());
    }
    EXPECT_THAT(known, testing::Not(testing::IsEmpty()));
    EXPECT_EQ(boldWordsOf(termsOf("DAXService.8").at("OPTIONS")), known);
}

TEST(ManualPages, TellOfEveryFactOfTheDeviceWithItsTypeMeaningAndDefault) {
    const auto terms = termsOf("device.ini.5");
    std::map<std::string, Words> known;
    for (const KovanHost::DeviceFact& fact : KovanHost::deviceFacts()) {
        const std::string line = "*" + fact.name + "* (" + typeOf(fact.fallback) + ")";
        const std::string text = fact.meaning + ". Default: " + written(fact.fallback) + ".";
        known[fact.group].insert(fact.name);
        std::string found;
        for (const Term& term : terms.at("[" + fact.group + "]")) {
            found = term.line == line ? term.text : found;
        }
        found.erase(std::remove(found.begin(), found.end(), '*'), found.end()); // what is bold in it
        EXPECT_EQ(found, text) << "[" << fact.group << "] " << line;
    }
    for (const auto& [group, names] : known) {
        EXPECT_EQ(boldWordsOf(terms.at("[" + group + "]")), names) << group;
    }
}

TEST(ManualPages, TellOfEveryGroupAndKeyOfAScenario) {
    std::map<std::string, Words> told;
    for (const auto& [heading, terms] : termsOf("core-scenario.ini.5")) {
        if (heading[0] == '[') {
            told[heading.substr(1, heading.size() - 2)] = boldWordsOf(terms);
        }
    }
    EXPECT_EQ(told, DAXCoreSimulator::scenarioKeys());
}

TEST(ManualPages, TellOfEveryTypeOfTheClientLibrary) {
    const fs::path header = SOURCES / "clients/libdaxclient/include/dax/client.h";
    if (!fs::exists(header)) {
        GTEST_SKIP() << "there is no " << header;
    }
    const std::string page = textOf(PAGES / "libdaxclient.3.scd");
    const std::string source = textOf(header);
    const std::regex type("\n(?:class DAX_API|struct|enum class) ([A-Z][A-Za-z]*)[^;\n]*\\{");
    for (std::sregex_iterator at(source.begin(), source.end(), type), end; at != end; ++at) {
        EXPECT_THAT(page, testing::HasSubstr("*dax::" + (*at)[1].str() + "*"));
    }
}

} // namespace
} // namespace DAX::Tests
