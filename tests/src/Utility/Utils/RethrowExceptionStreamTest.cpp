#include "Utility/Utils/RethrowExceptionStream.h"

#include <stdexcept>
#include <string>

#include <boost/exception/get_error_info.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"
#include "support/FakeKovan.h"

using namespace DAX::Common::Utils;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

template <class Statement>
void addText(Statement statement, const std::string& text) {
    try {
        statement();
    } catch (...) {
        RethrowExceptionStream().getStream() << text;
    }
}

std::string rethrowsOf(const boost::exception& exception) {
    const std::string* const text = boost::get_error_info<errinfo_rethrows>(exception);
    return text != nullptr ? *text : "(none)";
}

void throwGeneric() {
    DAX_THROW(GenericException(), "site");
}

TEST(RethrowExceptionStreamTest, AddsItsTextToTheExceptionBeingHandled) {
    try {
        addText(throwGeneric, "on the way up");
        FAIL();
    } catch (const GenericException& exception) {
        EXPECT_EQ(rethrowsOf(exception), "on the way up");
        EXPECT_EQ(*boost::get_error_info<errinfo_stream_text>(exception), "site");
    }
}

TEST(RethrowExceptionStreamTest, PutsTheNewestTextFirstOnePerLine) {
    try {
        addText([] { addText(throwGeneric, "inner"); }, "outer");
        FAIL();
    } catch (const GenericException& exception) {
        EXPECT_EQ(rethrowsOf(exception), "outer\ninner");
    }
}

TEST(RethrowExceptionStreamTest, RethrowsTheSameObject) {
    const GenericException* thrown = nullptr;
    try {
        try {
            throwGeneric();
        } catch (const GenericException& exception) {
            thrown = &exception;
            RethrowExceptionStream().getStream() << "text";
        }
        FAIL();
    } catch (const GenericException& exception) {
        EXPECT_EQ(&exception, thrown);
    }
}

TEST(RethrowExceptionStreamTest, RethrowsTheExceptionOfAPointer) {
    const boost::exception_ptr pointer = (DAX_EXCEPTION(GenericException()) << "site").getExceptionPtr();
    try {
        RethrowExceptionStream(pointer).getStream() << "elsewhere";
        FAIL();
    } catch (const GenericException& exception) {
        EXPECT_EQ(rethrowsOf(exception), "elsewhere");
    }
}

TEST(RethrowExceptionStreamTest, RethrowsTheExceptionOfAPointerWhileAnotherIsHandled) {
    const boost::exception_ptr pointer = (DAX_EXCEPTION(GenericException()) << "site").getExceptionPtr();
    const auto rethrowPointer = [&pointer] {
        try {
            throw std::runtime_error("being handled");
        } catch (const std::runtime_error&) {
            RethrowExceptionStream(pointer).getStream() << "elsewhere";
        }
    };
    EXPECT_THROW(rethrowPointer(), GenericException);
}

TEST(RethrowExceptionStreamTest, TurnsAThreadInterruptionIntoOneThatCarriesText) {
    try {
        addText([] { throw boost::thread_interrupted(); }, "while waiting");
        FAIL();
    } catch (const thread_interrupted& exception) {
        EXPECT_EQ(rethrowsOf(exception), "while waiting");
        EXPECT_THAT(*boost::get_error_info<boost::throw_function>(exception), HasSubstr("~RethrowExceptionStream()"));
        EXPECT_THAT(*boost::get_error_info<boost::throw_file>(exception), HasSubstr("RethrowExceptionStream.cpp"));
    }
}

TEST(RethrowExceptionStreamTest, LetsAHandlerOfTheBoostTypeCatchAnInterruption) {
    EXPECT_THROW(addText([] { throw boost::thread_interrupted(); }, "text"), boost::thread_interrupted);
}

TEST(RethrowExceptionStreamTest, AddsToAnInterruptionThatAlreadyCarriesText) {
    try {
        addText([] { addText([] { throw boost::thread_interrupted(); }, "inner"); }, "outer");
        FAIL();
    } catch (const thread_interrupted& exception) {
        EXPECT_EQ(rethrowsOf(exception), "outer\ninner");
    }
}

TEST(RethrowExceptionStreamTest, LogsTheTextOfAnExceptionThatCannotCarryIt) {
    EXPECT_THROW(addText([] { throw std::runtime_error("plain"); }, "the text"), std::runtime_error);

    EXPECT_THAT(FakeKovan::messages("INF"), ElementsAre("Rethrowing unknown exception: the text"));
}

TEST(RethrowExceptionStreamTest, LogsNothingForABoostException) {
    EXPECT_THROW(addText(throwGeneric, "text"), GenericException);

    EXPECT_TRUE(FakeKovan::logLines().empty());
}

// Fails while the text is being gathered.
std::string nameThatThrows() {
    throw std::logic_error("no name");
}

TEST(RethrowExceptionStreamTest, LetsTheFailureOfItsTextOutInsteadOfEndingTheProcess) {
    const auto describe = [] {
        try {
            throwGeneric();
        } catch (...) {
            RethrowExceptionStream().getStream() << "on the way up of " << nameThatThrows();
        }
    };
    EXPECT_THROW(describe(), std::logic_error);
}

// Rethrows, with text, while another exception leaves the block around it.
struct RethrowsWhenItDies {
    ~RethrowsWhenItDies() {
        try {
            addText(throwGeneric, "in a destructor");
        } catch (const GenericException& exception) {
            FakeKovan::note(rethrowsOf(exception));
        }
    }
};

TEST(RethrowExceptionStreamTest, RethrowsInADestructorWhileAnotherExceptionIsOnItsWay) {
    const auto leave = [] {
        const RethrowsWhenItDies dying;
        throw std::runtime_error("leaving");
    };
    EXPECT_THROW(leave(), std::runtime_error);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("in a destructor"));
}

// The exception that the statement throws, with the texts added on its way.
template <class Statement>
std::string rethrowsOfWhatLeaves(const Statement& statement) {
    try {
        statement();
    } catch (const GenericException& exception) {
        return *boost::get_error_info<errinfo_stream_text>(exception) + ": " + rethrowsOf(exception);
    }
    return "(nothing thrown)";
}

TEST(RethrowWithTextTest, AddsTheTextToTheExceptionBeingHandled) {
    const auto rethrow = [] {
        try {
            addText(throwGeneric, "inner");
        } catch (...) {
            rethrowWithText([](std::ostream& text) { text << "outer " << 7; });
        }
    };
    EXPECT_EQ(rethrowsOfWhatLeaves(rethrow), "site: outer 7\ninner");
}

TEST(RethrowWithTextTest, AddsTheTextToTheExceptionOfAPointer) {
    const boost::exception_ptr pointer = (DAX_EXCEPTION(GenericException()) << "site").getExceptionPtr();
    EXPECT_EQ(rethrowsOfWhatLeaves([&] { rethrowWithText(pointer, [](std::ostream& text) { text << "elsewhere"; }); }),
              "site: elsewhere");
}

TEST(RethrowWithTextTest, RethrowsThoughTheDescriptionThrows) {
    const auto describe = [](std::ostream& text) { text << "on the way up of " << nameThatThrows(); };
    const auto rethrow = [&describe] {
        try {
            throwGeneric();
        } catch (...) {
            rethrowWithText(describe);
        }
    };
    EXPECT_EQ(rethrowsOfWhatLeaves(rethrow), "site: on the way up of ");
    const boost::exception_ptr pointer = (DAX_EXCEPTION(GenericException()) << "site").getExceptionPtr();
    EXPECT_EQ(rethrowsOfWhatLeaves([&] { rethrowWithText(pointer, describe); }), "site: on the way up of ");
}

} // namespace
