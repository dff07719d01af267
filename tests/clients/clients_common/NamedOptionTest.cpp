// Options whose values have names.
#include <gmock/gmock.h>

#include "RunProgram.h"

namespace DAX::Tests {
namespace {

using namespace testing;

enum class Fruit { APPLE = 7, PEAR = 3, PLUM = 5 };

class NamedOption : public Test {
protected:
    ProgramRun run(const std::vector<const char*>& arguments) {
        return runProgram(
            [this](clients_common::Program& program) {
                program.addCommand("eat", "", [](bool) { return 0; })
                    .addNamed("--fruit", fruit,
                              std::map<std::string, Fruit>{
                                  {"apple", Fruit::APPLE}, {"PEAR", Fruit::PEAR}, {"Plum", Fruit::PLUM}},
                              "PEAR", "What to eat");
            },
            arguments);
    }

    Fruit fruit = Fruit::PEAR;
};

TEST_F(NamedOption, IsShownInTheHelpWithItsWordsInTheOrderOfTheirNumbers) {
    EXPECT_THAT(run({"eat", "--help"}).output, HasSubstr("--fruit PEAR|Plum|apple"));
}

TEST_F(NamedOption, TakesAWordInLettersOfAnyCaseOrItsNumber) {
    for (const char* const text : {"Plum", "plum", "PLUM", "5"}) {
        fruit = Fruit::PEAR;
        EXPECT_EQ(run({"eat", "--fruit", text}).status, 0) << text;
        EXPECT_EQ(fruit, Fruit::PLUM) << text;
    }
}

TEST_F(NamedOption, RefusesAllElse) {
    for (const std::string text : {"cherry", "4", "05", " 5", "Plum "}) {
        const ProgramRun refused = run({"eat", "--fruit", text.c_str()});
        EXPECT_EQ(refused.status, 2) << text;
        EXPECT_EQ(refused.errors,
                  "--fruit: " + text + " is none of PEAR, Plum, apple\nRun with --help for more information.\n");
    }
    EXPECT_EQ(fruit, Fruit::PEAR);
}

} // namespace
} // namespace DAX::Tests
