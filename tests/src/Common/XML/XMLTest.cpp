#include <fstream>
#include <locale>
#include <map>
#include <sstream>

#include <boost/archive/xml_oarchive.hpp>
#include <boost/serialization/map.hpp>
#include <boost/serialization/nvp.hpp>
#include <boost/serialization/optional.hpp>
#include <boost/serialization/string.hpp>
#include <gtest/gtest.h>

#include "Common/XML/XMLInput.h"
#include "Common/XML/XMLOutput.h"

namespace DAX::Tests {
namespace {

using boost::archive::archive_exception;
using boost::serialization::make_nvp;
using Common::XML::XMLInput;
using Common::XML::XMLOutput;

const int NUMBER = 1234567;
const std::map<std::string, std::string> TEXTS = {{"one", "<1>"}, {"two", "& 2\n"}};

std::string document() {
    std::ostringstream text;
    {
        XMLOutput archive(text);
        archive << make_nvp("number", NUMBER) << make_nvp("texts", TEXTS);
        archive.finish();
    }
    return text.str();
}

// Numbers in groups, with a comma before the fraction.
struct OtherNumbers : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

class OtherLocale {
public:
    OtherLocale() : m_before(std::locale::global(std::locale(std::locale::classic(), new OtherNumbers))) {}
    ~OtherLocale() { std::locale::global(m_before); }
    OtherLocale(const OtherLocale&) = delete;
    OtherLocale& operator=(const OtherLocale&) = delete;

private:
    const std::locale m_before;
};

archive_exception::exception_code codeOf(const std::string& text) {
    std::istringstream file(text);
    try {
        int number = 0;
        XMLInput(file) >> make_nvp("number", number);
        return archive_exception::no_exception;
    } catch (const archive_exception& exception) {
        return exception.code;
    }
}

TEST(XMLOutput, WritesWhatTheLibraryWrites) {
    std::ostringstream text;
    {
        boost::archive::xml_oarchive archive(text);
        archive << make_nvp("number", NUMBER) << make_nvp("texts", TEXTS);
    }
    EXPECT_EQ(document(), text.str());
}

TEST(XMLOutput, ThrowsWhenTheFileCannotBeOpened) {
    std::ofstream file("/no folder/file");
    EXPECT_THROW(XMLOutput{file}, archive_exception);
}

TEST(XMLOutput, ThrowsAtTheEndWhenTheMediumIsFull) {
    std::ofstream file("/dev/full");
    XMLOutput archive(file);
    archive << make_nvp("number", NUMBER);
    EXPECT_THROW(archive.finish(), archive_exception);
}

TEST(XMLInput, ReadsWhatWasWritten) {
    std::istringstream file(document());
    XMLInput archive(file);
    int number = 0;
    std::map<std::string, std::string> texts;
    archive >> make_nvp("number", number) >> make_nvp("texts", texts);
    EXPECT_EQ(number, NUMBER);
    EXPECT_EQ(texts, TEXTS);
}

TEST(XMLInput, ReadsAndWritesTheSameInEveryLocale) {
    const std::string classic = document();
    const OtherLocale locale;
    EXPECT_EQ(document(), classic);
    std::istringstream file(classic);
    int number = 0;
    XMLInput(file) >> make_nvp("number", number);
    EXPECT_EQ(number, NUMBER);
}

TEST(XMLInput, ReadsNothingAfterTheLastElementItIsAskedFor) {
    const std::string text = document();
    const std::string element = "</number>";
    EXPECT_EQ(codeOf(text.substr(0, text.find(element) + element.size())), archive_exception::no_exception);
}

TEST(XMLInput, ThrowsForABadHeader) {
    EXPECT_EQ(codeOf(""), archive_exception::input_stream_error);
    EXPECT_EQ(codeOf("<text>"), archive_exception::other_exception);
}

TEST(XMLInput, ThrowsWhenAnElementIsNotThere) {
    const std::string text = document();
    EXPECT_EQ(codeOf(text.substr(0, text.find("<number>"))), archive_exception::input_stream_error);
    EXPECT_EQ(codeOf(text.substr(0, text.find("</number>"))), archive_exception::input_stream_error);
}

} // namespace
} // namespace DAX::Tests
