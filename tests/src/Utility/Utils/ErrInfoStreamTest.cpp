#include "Utility/Utils/ErrInfoStream.h"

#include <boost/exception/get_error_info.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Utility/Utils/GenericException.h"

namespace Utils = DAX::Common::Utils;
using testing::EndsWith;
using testing::HasSubstr;
using Utils::GenericException;

namespace {

class SubException : public GenericException {};

template <class Tag, class E>
std::string tagOf(const E& exception) {
    const auto* const value = boost::get_error_info<Tag>(exception);
    return value != nullptr ? *value : "(none)";
}

template <class E, class Statement>
E thrownBy(Statement statement) {
    try {
        statement();
    } catch (const E& exception) {
        return exception;
    }
    ADD_FAILURE() << "nothing was thrown";
    return E();
}

TEST(ErrInfoStreamTest, ThrowsTheStreamedTextAsItsTag) {
    const auto caught = thrownBy<GenericException>([] { DAX_THROW(GenericException(), "no " << 5 << ' ' << true); });

    EXPECT_EQ(tagOf<Utils::errinfo_stream_text>(caught), "no 5 1");
}

TEST(ErrInfoStreamTest, ThrowsATextFixedAtTheSite) {
    const auto caught =
        thrownBy<GenericException>([] { DAX_THROW(GenericException(), Utils::errinfo_stream("a", 1, 'b', 2.5)); });

    EXPECT_EQ(tagOf<Utils::errinfo_stream_text>(caught), "a1b2.5");
}

TEST(ErrInfoStreamTest, ThrowsWithoutTouchingTheTagsWhenNothingWasStreamed) {
    const auto caught =
        thrownBy<GenericException>([] { DAX_THROW(GenericException(), Utils::errinfo_description("a description")); });

    EXPECT_EQ(tagOf<Utils::errinfo_stream_text>(caught), "(none)");
    EXPECT_EQ(tagOf<Utils::errinfo_description>(caught), "a description");
}

TEST(ErrInfoStreamTest, KeepsTheAttachedTextWhenNothingWasStreamed) {
    const auto caught = thrownBy<GenericException>(
        [] { (DAX_EXCEPTION(GenericException()) << Utils::errinfo_stream("attached")).throwException(); });

    EXPECT_EQ(tagOf<Utils::errinfo_stream_text>(caught), "attached");
}

TEST(ErrInfoStreamTest, ReplacesTheAttachedTextByTheStreamedOne) {
    const auto caught = thrownBy<GenericException>(
        [] { DAX_THROW(GenericException(), Utils::errinfo_stream("attached") << "streamed"); });

    EXPECT_EQ(tagOf<Utils::errinfo_stream_text>(caught), "streamed");
}

TEST(ErrInfoStreamTest, CarriesEveryTag) {
    const auto caught = thrownBy<GenericException>([] {
        DAX_THROW(GenericException(), Utils::errinfo_string("s")
                                          << Utils::errinfo_description("d") << Utils::errinfo_rethrows("r")
                                          << Utils::errinfo_subject("j") << Utils::errinfo_supportcode("c")
                                          << Utils::errinfo_path("/a/path") << Utils::errinfo_errorcode(-7));
    });

    EXPECT_EQ(tagOf<Utils::errinfo_string>(caught), "s");
    EXPECT_EQ(tagOf<Utils::errinfo_description>(caught), "d");
    EXPECT_EQ(tagOf<Utils::errinfo_rethrows>(caught), "r");
    EXPECT_EQ(tagOf<Utils::errinfo_subject>(caught), "j");
    EXPECT_EQ(tagOf<Utils::errinfo_supportcode>(caught), "c");
    EXPECT_EQ(*boost::get_error_info<Utils::errinfo_path>(caught), boost::filesystem::path("/a/path"));
    EXPECT_EQ(*boost::get_error_info<Utils::errinfo_errorcode>(caught), -7);
}

TEST(ErrInfoStreamTest, SharesTheTagsWithTheExceptionUntilItThrows) {
    GenericException exception;
    exception << Utils::errinfo_subject("subject");
    auto stream = DAX_EXCEPTION(exception);
    stream << Utils::errinfo_subject("newer subject");
    const auto caught = thrownBy<GenericException>([&stream] { stream.throwException(); });
    caught << Utils::errinfo_subject("latest subject");

    EXPECT_EQ(tagOf<Utils::errinfo_subject>(exception), "newer subject");
    EXPECT_EQ(tagOf<Utils::errinfo_subject>(caught), "latest subject");
}

TEST(ErrInfoStreamTest, ThrowsTheTagsThatTheExceptionAlreadyHas) {
    const auto caught = thrownBy<GenericException>([] {
        GenericException exception;
        exception << Utils::errinfo_subject("subject");
        DAX_THROW(exception, "text");
    });

    EXPECT_EQ(tagOf<Utils::errinfo_subject>(caught), "subject");
    EXPECT_EQ(tagOf<Utils::errinfo_stream_text>(caught), "text");
}

TEST(ErrInfoStreamTest, HasNoThrowLocationBeforeTheSiteSetsIt) {
    const GenericException exception;

    EXPECT_EQ(boost::get_error_info<boost::throw_file>(exception), nullptr);
    EXPECT_EQ(boost::get_error_info<boost::throw_function>(exception), nullptr);
    EXPECT_EQ(boost::get_error_info<boost::throw_line>(exception), nullptr);
}

[[noreturn]] void throwHere(int) {
    DAX_THROW(GenericException(), "text");
}

TEST(ErrInfoStreamTest, ThrowsWithTheFullPathTheSignatureAndTheLineOfTheSite) {
    const auto caught = thrownBy<GenericException>([] { throwHere(1); });

    EXPECT_STREQ(*boost::get_error_info<boost::throw_file>(caught), __FILE__);
    EXPECT_THAT(*boost::get_error_info<boost::throw_function>(caught), HasSubstr("throwHere(int)"));
    EXPECT_EQ(*boost::get_error_info<boost::throw_line>(caught), __LINE__ - 8);
}

void check(bool good, const boost::source_location& site) {
    if (!good) {
        DAX_THROW_AT(site, GenericException(), "bad");
    }
}

void callerOfACheck(bool good) {
    check(good, BOOST_CURRENT_LOCATION);
}

TEST(ErrInfoStreamTest, ThrowsWithTheLocationOfTheSiteThatASharedCheckWasGiven) {
    const auto caught = thrownBy<GenericException>([] { callerOfACheck(false); });

    EXPECT_STREQ(*boost::get_error_info<boost::throw_file>(caught), __FILE__);
    EXPECT_THAT(*boost::get_error_info<boost::throw_function>(caught), HasSubstr("callerOfACheck(bool)"));
    EXPECT_EQ(*boost::get_error_info<boost::throw_line>(caught), __LINE__ - 8);
    EXPECT_EQ(tagOf<Utils::errinfo_stream_text>(caught), "bad");
}

TEST(ErrInfoStreamTest, KeepsItsTypeWhenItIsCaptured) {
    boost::exception_ptr captured;
    try {
        DAX_THROW(SubException(), "text");
    } catch (...) {
        captured = boost::current_exception();
    }
    const auto caught = thrownBy<SubException>([&captured] { boost::rethrow_exception(captured); });

    EXPECT_EQ(tagOf<Utils::errinfo_stream_text>(caught), "text");
}

TEST(ErrInfoStreamTest, GivesAnExceptionPointerToWhatItWouldThrow) {
    const boost::exception_ptr pointer = (DAX_EXCEPTION(SubException()) << "text " << 1).getExceptionPtr();
    const auto caught = thrownBy<SubException>([&pointer] { boost::rethrow_exception(pointer); });

    EXPECT_EQ(tagOf<Utils::errinfo_stream_text>(caught), "text 1");
    EXPECT_STREQ(*boost::get_error_info<boost::throw_file>(caught), __FILE__);
}

TEST(ErrInfoStreamTest, ShowsLocationTypeAndTagsInTheDiagnosticText) {
    std::string text;
    try {
        DAX_THROW(SubException(), "text" << Utils::errinfo_errorcode(-7));
    } catch (...) {
        text = boost::current_exception_diagnostic_information(true);
    }
    EXPECT_THAT(text, HasSubstr("ErrInfoStreamTest.cpp"));
    EXPECT_THAT(text, HasSubstr("Dynamic exception type: "));
    EXPECT_THAT(text, HasSubstr("SubException"));
    EXPECT_THAT(text, HasSubstr("[DAX::Common::Utils::tag_errinfo_stream*] = text\n"));
    EXPECT_THAT(text, HasSubstr("[DAX::Common::Utils::tag_errinfo_errorcode*] = -7\n"));
}

} // namespace
