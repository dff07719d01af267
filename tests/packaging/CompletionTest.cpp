// The completion of bash offers what the programs know.
#include <chrono>
#include <cstdlib>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "support/CommandHelp.h"
#include "support/Process.h"
#include "support/TemporaryRoot.h"

namespace DAX::Tests {
namespace {

using Words = std::set<std::string>;
using testing::ElementsAre;
using testing::IsEmpty;

// Completes each line of its input, of which the last word is the one to complete, and prints the offers in a line.
const char DRIVER[] =
    ". \"$0\"\n"
    "while IFS= read -r line; do\n"
    "    read -r -a COMP_WORDS <<<\"$line\"\n"
    "    [[ $line != *' ' ]] || COMP_WORDS+=('')\n"
    "    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n"
    "    _dax_tool \"${COMP_WORDS[0]}\" \"${COMP_WORDS[COMP_CWORD]}\" \"${COMP_WORDS[COMP_CWORD-1]}\"\n"
    "    echo \"${COMPREPLY[*]}\"\n"
    "done\n";

class Completion : public testing::Test {
protected:
    // What is offered for each line.
    std::vector<Words> offers(const std::vector<std::string>& lines) const {
        Command command{{"bash", "-c", DRIVER, std::string(PACKAGING) + "/completion/dax-tools.bash"}, {}, {}, {}};
        command.environment["PATH"] = std::string(PROGRAMS) + ":" + std::getenv("PATH");
        for (const std::string& line : lines) {
            command.input += line + "\n";
        }
        const FinishedRun finished = run(command, std::chrono::seconds(60));
        EXPECT_EQ(finished.errors, "");
        std::vector<Words> all;
        std::istringstream printed(finished.output);
        for (std::string line; std::getline(printed, line);) {
            std::istringstream words(line);
            all.emplace_back(std::istream_iterator<std::string>(words), std::istream_iterator<std::string>());
        }
        all.resize(lines.size());
        return all;
    }

    Words offersFor(const std::string& line) const { return offers({line}).front(); }

    void expectWhatIsKnown(const std::string& program) const {
        std::vector<std::string> lines;
        std::vector<Words> known;
        for (const auto& [command, help] : commandsOf(std::string(PROGRAMS) + "/" + program)) {
            const std::string line = program + " " + command + (command.empty() ? "" : " ");
            lines.push_back(line + "--");
            known.push_back(help.options);
            if (!help.commands.empty()) {
                lines.push_back(line);
                known.push_back(help.commands);
            }
        }
        ASSERT_GT(lines.size(), 10U);
        const std::vector<Words> offered = offers(lines);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            EXPECT_EQ(offered[i], known[i]) << lines[i];
        }
    }

    const TemporaryRoot m_root;
};

TEST_F(Completion, OffersEveryCommandAndOptionOfDaxctl) {
    expectWhatIsKnown("daxctl");
}

TEST_F(Completion, OffersEveryCommandAndOptionOfKovanctl) {
    expectWhatIsKnown("kovanctl");
}

TEST_F(Completion, OffersOnlyWhatBeginsLikeTheWord) {
    EXPECT_THAT(offersFor("daxctl lock re"), ElementsAre("release"));
    EXPECT_THAT(offersFor("daxctl upgrade --fin"), ElementsAre("--finalization-flag"));
    EXPECT_THAT(offersFor("daxctl x"), IsEmpty());
}

TEST_F(Completion, OffersTheValuesOfAnOption) {
    EXPECT_THAT(offersFor("daxctl search --type "), ElementsAre("OTA", "OTN", "POSTPONE", "UNDEFINED", "USB"));
    EXPECT_THAT(offersFor("daxctl search --type = O"), ElementsAre("OTA", "OTN"));
    EXPECT_THAT(offersFor("daxctl search --priority "), IsEmpty());
}

TEST_F(Completion, TakesTheValueOfAnOptionForNoCommand) {
    EXPECT_THAT(offersFor("daxctl search --name lock --pr"), ElementsAre("--priority"));
}

TEST_F(Completion, OffersTheTypesAndTheKeysOfTheDevice) {
    EXPECT_THAT(offersFor("kovanctl setting set db/one "), ElementsAre("bool", "double", "int", "string"));
    const FinishedRun set =
        run({{std::string(PROGRAMS) + "/kovanctl", "setting", "set", "db/one", "int", "1"}, {}, {}, {}});
    EXPECT_EQ(set.end, ProcessEnd::exited(0)) << set.errors;
    EXPECT_THAT(offersFor("kovanctl setting get "), ElementsAre("db/one"));
    EXPECT_THAT(offersFor("kovanctl info set system_info/otn_o"), ElementsAre("system_info/otn_onoff"));
}

TEST_F(Completion, OffersCommandsToRunUnderALock) {
    EXPECT_THAT(offersFor("daxctl lock hold -- daxct"), ElementsAre("daxctl"));
    EXPECT_THAT(offersFor("daxctl lock hold -- sh "), IsEmpty());
}

TEST_F(Completion, OffersNothingWithoutTheProgram) {
    EXPECT_THAT(offersFor("/missing/daxctl "), IsEmpty());
}

} // namespace
} // namespace DAX::Tests
