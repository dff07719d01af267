#include "RunProgram.h"

namespace DAX::Tests {
namespace {

const char* const HINT = "\nRun with --help for more information.\n";

int nothing(bool /*json*/) {
    return 0;
}

// What the tool says to a command line that it does not understand.
std::string complaintAbout(const std::vector<const char*>& arguments) {
    const ProgramRun run = runProgram(
        [](clients_common::Program& program) {
            program.addCommand("status", "", nothing);
            program.addCommand("upgrade", "", nothing);
            auto group = program.addGroup("lock", "");
            group.addCommand("acquire", "", nothing);
            group.addCommand("release", "", nothing);
        },
        arguments);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.output, "");
    return run.errors;
}

TEST(UnknownCommand, IsToldWithTheNearestOne) {
    for (const char* const word : {"upgrad", "upgarde", "ugrade", "uprgades", "up"}) {
        EXPECT_EQ(complaintAbout({word}),
                  std::string("There is no command \"") + word + "\". Did you mean \"upgrade\"?" + HINT);
    }
}

TEST(UnknownCommand, IsToldWithAllCommandsWhenNoneIsNear) {
    for (const char* const word : {"nonsense", "u", ""}) {
        EXPECT_EQ(complaintAbout({word}),
                  std::string("There is no command \"") + word + "\". The commands are: status, upgrade, lock." + HINT);
    }
}

TEST(UnknownCommand, OfAGroupIsToldWithTheGroup) {
    EXPECT_EQ(complaintAbout({"lock", "aquire"}),
              std::string("There is no command \"lock aquire\". Did you mean \"lock acquire\"?") + HINT);
    EXPECT_EQ(complaintAbout({"lock", "list"}),
              std::string("There is no command \"lock list\". The commands are: acquire, release.") + HINT);
}

TEST(UnknownCommand, IsFoundBesideOptions) {
    EXPECT_EQ(complaintAbout({"--loud", "statsu", "--priority", "6"}),
              std::string("There is no command \"statsu\". Did you mean \"status\"?") + HINT);
}

TEST(UnknownCommand, IsNotWhatIsToldOfACommandThatIsMissing) {
    EXPECT_EQ(complaintAbout({}), std::string("A subcommand is required") + HINT);
    EXPECT_EQ(complaintAbout({"lock"}), std::string("A subcommand is required") + HINT);
}

TEST(UnknownCommand, IsNotWhatIsToldOfAnotherArgument) {
    EXPECT_EQ(complaintAbout({"status", "--jsn"}),
              std::string("The following argument was not expected: --jsn") + HINT);
    EXPECT_EQ(complaintAbout({"status", "upgrad"}),
              std::string("The following argument was not expected: upgrad") + HINT);
}

} // namespace
} // namespace DAX::Tests
