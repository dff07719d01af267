#include "clients_common/Printable.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "RunProgram.h"
#include "clients_common/Output.h"

namespace DAX::Tests {
namespace {

using clients_common::printable;
using clients_common::printableJson;
using clients_common::printableLines;

TEST(Printable, LeavesNothingInATextThatATerminalObeys) {
    EXPECT_EQ(printable("a\x1b[31mb\n"), "a\\x1b[31mb\\x0a");
    EXPECT_EQ(printable("\xc2\x9b"), "\\xc2\\x9b");
    EXPECT_EQ(printable("\xff\xc3"), "\\xff\\xc3");
    EXPECT_EQ(printable("\xc0\x80\xed\xa0\x80"), "\\xc0\\x80\\xed\\xa0\\x80");
    EXPECT_EQ(printable("Gerät \xf0\x9f\x98\x80 €"), "Gerät \xf0\x9f\x98\x80 €");
}

TEST(Printable, LeavesNothingThatTurnsTheDirectionOfAText) {
    EXPECT_EQ(printable("a\u202eb"), "a\\xe2\\x80\\xaeb");
    for (const char* const letter : {"\u061c", "\u200e", "\u200f", "\u202a", "\u202b", "\u202c", "\u202d", "\u2066",
                                     "\u2067", "\u2068", "\u2069", "\u2028", "\u2029"}) {
        EXPECT_EQ(printable(letter).substr(0, 2), "\\x") << letter;
        EXPECT_EQ(printableJson(letter).substr(0, 2), "\\u") << letter;
    }
    for (const char* const letter : {"\u061b", "\u061d", "\u200d", "\u2010", "\u2027", "\u202f", "\u2065", "\u206a"}) {
        EXPECT_EQ(printable(letter), letter);
        EXPECT_EQ(printableJson(letter), letter);
    }
}

TEST(Printable, IsWhatAJsonDocumentShows) {
    const nlohmann::ordered_json text = "a\u202eb\xc2\x9b\x7f\x1b\xff\xed\xa0\x80 Gerät \xf0\x9f\x98\x80";
    const std::string shown = clients_common::jsonText({{"text", text}});
    EXPECT_EQ(shown, "{\"text\":\"a\\u202eb\\u009b\\u007f\\u001b\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd Gerät "
                     "\xf0\x9f\x98\x80\"}");
    EXPECT_EQ(nlohmann::ordered_json::parse(shown)["text"].get<std::string>().substr(0, 9), "a\u202eb\xc2\x9b\x7f\x1b");
    EXPECT_EQ(clients_common::jsonText({{"a", "\u2066"}}, 2), "{\n  \"a\": \"\\u2066\"\n}");
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
