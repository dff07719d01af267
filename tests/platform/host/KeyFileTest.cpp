#include "host/KeyFile.h"

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/KeyFileLines.h"
#include "support/Corruption.h"

using KovanHost::KeyFile;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

const std::string GOOD = "# a comment\n"
                         "[one]\n"
                         "Encoding=UTF-8\n"
                         "flag=true\r\n"
                         "\n"
                         "  number = -3 \n"
                         "[two]\n"
                         "Encoding=none\n"
                         "text=a\\sb\n"
                         "[one]\n"
                         "number=4\n"
                         "last=x";

std::string reasonAgainst(const std::string& text) {
    try {
        const KeyFile file(text);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "<none>";
}

template <class T>
std::string reasonAgainstValue(const std::string& text) {
    const KeyFile file("[group]\nkey=" + text + "\n");
    try {
        file.get<T>("group", "key");
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "<none>";
}

bool isGood(const std::string& text) {
    const std::unique_ptr<GKeyFile, void (*)(GKeyFile*)> file(g_key_file_new(), g_key_file_free);
    return g_key_file_load_from_data(file.get(), text.data(), text.size(), G_KEY_FILE_NONE, nullptr) != FALSE;
}

// All beginnings of the text, one after the other.
std::size_t firstBadLineByTrial(const std::string& text) {
    std::size_t line = 1;
    for (std::size_t end = text.find('\n'); end != std::string::npos && isGood(text.substr(0, end + 1)); ++line) {
        end = text.find('\n', end + 1);
    }
    return line;
}

} // namespace

TEST(KeyFileTest, GivesValuesByTheirTypes) {
    const KeyFile file(GOOD);

    EXPECT_EQ(file.get<bool>("one", "flag"), true);
    EXPECT_EQ(file.get<int>("one", "number"), 4);
    EXPECT_EQ(file.get<std::string>("two", "text"), "a b");
    EXPECT_EQ(file.raw("two", "text"), "a\\sb");
    EXPECT_EQ(file.get<std::string>("one", "last"), "x");
}

TEST(KeyFileTest, GivesNothingForWhatIsAbsent) {
    const KeyFile file(GOOD);

    EXPECT_EQ(file.get<bool>("one", "text"), std::nullopt);
    EXPECT_EQ(file.get<int>("three", "number"), std::nullopt);
    EXPECT_EQ(file.get<std::string>("", ""), std::nullopt);
    EXPECT_EQ(file.raw("one", "text"), std::nullopt);
    EXPECT_THAT(KeyFile().groups(), ElementsAre());
    EXPECT_THAT(file.keys("three"), ElementsAre());
}

TEST(KeyFileTest, KeepsTheOrder) {
    const KeyFile file("[b]\nz=1\ny=2\n[a]\nx=3\n");

    EXPECT_THAT(file.groups(), ElementsAre("b", "a"));
    EXPECT_THAT(file.keys("b"), ElementsAre("z", "y"));
}

TEST(KeyFileTest, EmptyTextHoldsNothing) {
    EXPECT_THAT(KeyFile("").groups(), ElementsAre());
}

TEST(KeyFileTest, BadLineIsReportedByItsNumber) {
    EXPECT_EQ(reasonAgainst("a=b\n"), "line 1: Key file does not start with a group");
    EXPECT_EQ(reasonAgainst("[a]\n\nx\ny\n"),
              "line 3: Key file contains line “x” which is not a key-value pair, group, or comment");
    EXPECT_EQ(reasonAgainst("[a]\nx"),
              "line 2: Key file contains line “x” which is not a key-value pair, group, or comment");
    EXPECT_EQ(reasonAgainst("[a]\na]=b\n"), "line 2: Invalid key name: a]");
    EXPECT_EQ(reasonAgainst("[a]\nEncoding=x\n"), "line 2: Key file contains unsupported encoding “x”");
    EXPECT_EQ(reasonAgainst(std::string("[a]\na=b\0\n", 9)), "line 2: a byte that is zero");
}

TEST(KeyFileTest, FirstOfSeveralBadLinesIsReported) {
    EXPECT_THAT(reasonAgainst(std::string("[a]\nx\n\0\n", 8)), StartsWith("line 2: Key file contains line “x”"));
    EXPECT_EQ(reasonAgainst(std::string("[a]\n\0\nx\n", 8)), "line 2: a byte that is zero");
}

TEST(KeyFileTest, EncodingCountsOnlyInTheFirstGroup) {
    EXPECT_EQ(reasonAgainst("[a]\nx=1\n[b]\nEncoding=x\n"), "<none>");
    EXPECT_THAT(reasonAgainst("[a]\nx=1\n[b]\nEncoding=x\n[a]\nEncoding=x\n"), StartsWith("line 6: "));
}

TEST(KeyFileTest, FindsTheLineThatGLibStopsAt) {
    std::vector<std::string> texts = DAX::Tests::changesOf(GOOD, std::string("=[]#\n\r \xff", 8));
    const std::vector<std::string> cuts = DAX::Tests::cutsOf(GOOD);
    texts.insert(texts.end(), cuts.begin(), cuts.end());
    int bad = 0;
    for (const std::string& text : texts) {
        if (!isGood(text)) {
            ++bad;
            ASSERT_EQ(firstBadLineByTrial(text), KovanHost::firstBadLine(text)) << text;
        }
    }
    EXPECT_GT(bad, 50);
}

TEST(KeyFileTest, LongReasonIsShortenedAndHarmless) {
    const std::string reason = reasonAgainst("[a]\n" + std::string(60000, 'x') + "\x1b\n");

    EXPECT_THAT(reason, StartsWith("line 2: Key file contains line “xxx"));
    EXPECT_THAT(reason, HasSubstr("xxx ... xxx"));
    EXPECT_THAT(reason, testing::EndsWith("xxx?” which is not a key-value pair, group, or comment"));
    EXPECT_LT(reason.size(), 200u);
}

TEST(KeyFileTest, ValueOfAnotherTypeIsReportedByLineAndKey) {
    EXPECT_EQ(reasonAgainstValue<bool>("yes"), "line 2: 'key' in [group] is no boolean (true or false): 'yes'");
    EXPECT_EQ(reasonAgainstValue<bool>(""), "line 2: 'key' in [group] is no boolean (true or false): ''");
    EXPECT_EQ(reasonAgainstValue<int>("1.5"), "line 2: 'key' in [group] is no number of 32 bits: '1.5'");
    EXPECT_EQ(reasonAgainstValue<int>("2147483648"), "line 2: 'key' in [group] is no number of 32 bits: '2147483648'");
    EXPECT_EQ(reasonAgainstValue<int>(""), "line 2: 'key' in [group] is no number of 32 bits: ''");
    const std::string text = "line 2: 'key' in [group] is no UTF-8 text with \\s, \\n, \\t, \\r and \\\\ for escapes: ";
    EXPECT_EQ(reasonAgainstValue<std::string>("a\\q"), text + "'a\\q'");
    EXPECT_EQ(reasonAgainstValue<std::string>("\xff"), text + "'\xef\xbf\xbd'");
}

TEST(KeyFileTest, LineOfAKeyIsTheLastOneWithIt) {
    const std::string text = "#[b]\n[a]\nx=1\n#x=2\n[b]\n x = 3\ny=x=4\n[a]\nx=5\n";

    EXPECT_EQ(KovanHost::lineOfKey(text, "a", "x"), 9u);
    EXPECT_EQ(KovanHost::lineOfKey(text, "b", "x"), 6u);
    EXPECT_EQ(KovanHost::lineOfKey(text, "b", "y"), 7u);
    EXPECT_EQ(KovanHost::lineOfKey(text, "a", "y"), 0u);
    EXPECT_EQ(KovanHost::lineOfKey("[a]\n\t\f x\t=1\n\vx=2\n", "a", "x"), 2u);
    EXPECT_EQ(KovanHost::lineOfKey("[a]\n\t\f x\t=1\n\vx=2\n", "a", "\vx"), 3u);
}

TEST(KeyFileTest, SetLeavesAllOtherLinesAsTheyAre) {
    KeyFile file("# top\n\n[a]\n# of x\n x = 1\n# of y\ny=2\n\n# of b\n[b]\nz=3\r\nz[de]=drei\n\n# end");
    file.set("a", "x", "one");
    file.set("a", "new", " padded ");
    file.set("c", "w", "4");

    EXPECT_EQ(file.text(),
              "# top\n\n[a]\n# of x\nx=one\n# of y\ny=2\nnew=\\spadded \n\n# of b\n[b]\nz=3\r\nz[de]=drei\n\n# "
              "end\n\n[c]\nw=4\n");
    EXPECT_EQ(file.get<std::string>("a", "x"), "one");
}

TEST(KeyFileTest, SetWritesTheLineThatIsInForce) {
    KeyFile file("[a]\nx=1\n[b]\n[a]\nx=2\n[b]\n");
    file.set("a", "x", "3");
    file.set("b", "y", "4");

    EXPECT_EQ(file.text(), "[a]\nx=1\n[b]\n[a]\nx=3\n[b]\ny=4\n");
    EXPECT_EQ(file.get<int>("a", "x"), 3);
}

TEST(KeyFileTest, WhatIsSetIsReadBack) {
    for (const char* value : {"", " ", "a\nb", "tab\t", "\\", "ä", "a=b", "#", "[x]", "\v", "a\f"}) {
        KeyFile file;
        file.set("group", "com.velmora/featureconf/a.b", value);
        EXPECT_EQ(value, KeyFile(file.text()).get<std::string>("group", "com.velmora/featureconf/a.b"));
    }
}

TEST(KeyFileTest, SetRefusesWhatCannotBeWritten) {
    KeyFile file;
    for (const char* name : {"", " a", "a ", "a=b", "a[b]", "a]", "#a", "a\nb", "\xff"}) {
        EXPECT_THROW(file.set("group", name, "1"), std::runtime_error) << name;
        EXPECT_THROW(file.set(name, "key", "1"), std::runtime_error) << name;
    }
    EXPECT_THROW(file.set("group", "key", "\xff"), std::runtime_error);
    EXPECT_THROW(file.set("group", "key", "\f"), std::runtime_error);
    EXPECT_EQ(file.text(), "");
}
