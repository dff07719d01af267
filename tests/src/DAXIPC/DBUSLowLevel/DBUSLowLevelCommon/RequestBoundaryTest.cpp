#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/RequestBoundary.h"

#include <map>
#include <stdexcept>
#include <string>

#include <boost/exception/all.hpp>
#include <boost/serialization/string.hpp>
#include <boost/thread/exceptions.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "DAXCommon/UserInterestExceptions.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/KeptInterruption.h"
#include "support/Thrown.h"
#include "support/WireGoldens.h"

using namespace DAX::Tests;
using namespace DAX::UserInterestExceptions;
using DAX::Common::DBUSWrapper::DBUSWrapperExceptions::UnknownMethodException;
using DAX::Common::Utils::errinfo_stream_text;
using DAX::Common::Utils::errinfo_supportcode;
using DAX::Common::Utils::KeptInterruption;
namespace RequestBoundary = DAX::DAXIPC::DBUSLowLevel::RequestBoundary;

namespace {

TEST(RequestBoundaryFind, ReturnsTheTablesEntryForTheMethod) {
    const std::map<std::string, int> table{{"one", 1}, {"two", 2}};
    EXPECT_EQ(&table.at("two"), &RequestBoundary::find(table, "two"));
}

TEST(RequestBoundaryFind, ThrowsForAMethodThatTheTableDoesNotHave) {
    const std::map<std::string, int> table{{"one", 1}};
    const auto findAnother = [&] { RequestBoundary::find(table, "another"); };
    EXPECT_EQ((thrownText<errinfo_stream_text, UnknownMethodException>(findAnother)), "Unknown method: another");
}

class RequestBoundaryAnswer : public testing::Test {
protected:
    template <class Handle>
    bool answer(Handle handle) {
        return RequestBoundary::answer(m_out, m_exceptionName, handle);
    }

    std::stringstream m_out;
    std::string m_exceptionName = "as before";
};

TEST_F(RequestBoundaryAnswer, LeavesWhatTheHandlerWrote) {
    EXPECT_TRUE(answer([&] { m_out << "the result"; }));
    EXPECT_EQ(m_out.str(), "the result");
    EXPECT_EQ(m_exceptionName, "as before");
}

TEST_F(RequestBoundaryAnswer, ReplacesAllThatWasWrittenByTheException) {
    EXPECT_FALSE(answer([&] {
        m_out << std::string(2000, 'x');
        DAX_THROW(CUSBReadError(), "pulled" << errinfo_supportcode("U-7"));
    }));
    EXPECT_EQ(m_exceptionName, "CUSBReadError");
    const auto [supportCode, diagnostic, object] = decode<std::string, std::string, CUSBReadError>(m_out.str());
    EXPECT_EQ(supportCode, "U-7");
    EXPECT_EQ(encode(supportCode, diagnostic, object), m_out.str());
}

TEST_F(RequestBoundaryAnswer, CatchesWhateverIsThrown) {
    EXPECT_FALSE(answer([] { throw 7; }));
    EXPECT_EQ(m_exceptionName, "DAXUnknownException");
}

TEST_F(RequestBoundaryAnswer, KeepsAnInterruptionUntilTheThreadCanEnd) {
    EXPECT_FALSE(answer([] { throw boost::thread_interrupted(); }));
    EXPECT_EQ(m_exceptionName, "DAXUnknownException");
    EXPECT_THROW(KeptInterruption::raise(), boost::thread_interrupted);
    EXPECT_NO_THROW(KeptInterruption::raise());
}

TEST_F(RequestBoundaryAnswer, KeepsNothingElse) {
    EXPECT_FALSE(answer([] { throw 7; }));
    EXPECT_NO_THROW(KeptInterruption::raise());
}

struct OfAnotherKind {};

TEST_F(RequestBoundaryAnswer, ThrowsWhenTheExceptionCannotBeWritten) {
    const auto failWithANestedException = [&] {
        m_out << "half";
        try {
            throw boost::enable_current_exception(OfAnotherKind());
        } catch (...) {
            DAX_THROW(CUpdateFailed(), boost::errinfo_nested_exception(boost::current_exception()));
        }
    };
    EXPECT_THROW(answer(failWithANestedException), OfAnotherKind);
    EXPECT_EQ(m_out.str(), "half");
    EXPECT_EQ(m_exceptionName, "as before");
}

} // namespace
