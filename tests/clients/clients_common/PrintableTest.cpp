#include "clients_common/Printable.h"

#include <gtest/gtest.h>

#include "RunProgram.h"

namespace DAX::Tests {
namespace {

using clients_common::printable;
using clients_common::printableLines;

TEST(Printable, LeavesNothingInATextThatATerminalObeys) {
    EXPECT_EQ(printable("a\x1b[31mb\n"), "a\\x1b[31mb\\x0a");
    EXPECT_EQ(printable("\xc2\x9b"), "\\xc2\\x9b");
    EXPECT_EQ(printable("\xff\xc3"), "\\xff\\xc3");
    EXPECT_EQ(printable("\xc0\x80\xed\xa0\x80"), "\\xc0\\x80\\xed\\xa0\\x80");
    EXPECT_EQ(printable("Gerät \xf0\x9f\x98\x80 €"), "Gerät \xf0\x9f\x98\x80 €");
}

TEST(Printable, CutsNothingInTheMiddleOfALetter) {
    EXPECT_EQ(printable("aé€", 2), "aé...");
    EXPECT_EQ(printable("aé€", 4), "aé€");
}

TEST(Printable, KeepsTheLinesOfALongText) {
    EXPECT_EQ(printableLines("a\n\tb\x1b[31m\r\n"), "a\n\tb\\x1b[31m\\x0d\n");
    EXPECT_EQ(printableLines(""), "");
}

TEST(Printable, IsWhatAProgramSaysOfItsFailure) {
    const auto fail = [](clients_common::Program& program) {
        program.addCommand("fail", "", [](bool) -> int { throw clients_common::Refusal("held by \x1b[31mX"); });
    };
    const ProgramRun run = runProgram(fail, {"fail"});
    EXPECT_EQ(run.errors, "tool: held by \\x1b[31mX\n");
    EXPECT_EQ(runProgram(fail, {"fail", "--json"}).output,
              "{\n  \"error\": \"held by \\u001b[31mX\",\n  \"kind\": \"refused\"\n}\n");
}

} // namespace
} // namespace DAX::Tests
