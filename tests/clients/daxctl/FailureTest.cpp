#include "daxctl/Failure.h"

#include <boost/exception_ptr.hpp>
#include <gmock/gmock.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "DAXCommon/UserInterestExceptions.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/StandardExceptionHandler.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using Common::Utils::errinfo_description;
using Common::Utils::errinfo_supportcode;
using daxctl::Failure;
using DAXIPC::DBUSLowLevel::StandardExceptionHandler;
using UserInterestExceptions::CUSBReadError;
namespace Wrapper = Common::DBUSWrapper::DBUSWrapperExceptions;

template <class Statement>
Failure failureOf(const Statement& statement) {
    try {
        statement();
    } catch (...) {
        return daxctl::describeCurrentException();
    }
    return {"nothing was thrown", {}, {}, {}};
}

// The exception that the statement throws, as it arrives after one hop over the bus.
template <class Statement>
void overTheBus(const Statement& statement) {
    std::string name;
    std::stringstream archive;
    try {
        statement();
    } catch (...) {
        StandardExceptionHandler::wrapException(boost::current_exception(), name, archive);
    }
    StandardExceptionHandler::unwrapException("startInstallation", name, archive);
}

TEST(Failure, IsShownByNameSupportCodeAndText) {
    EXPECT_EQ((Failure{"CWrongKeys", "E-42", "It is broken.", "chain"}.toString()),
              "CWrongKeys (support code E-42): It is broken.");
}

TEST(Failure, IsShownWithoutASupportCodeWhenItHasNone) {
    EXPECT_EQ((Failure{"CWrongKeys", "", "It is broken.", "chain"}.toString()), "CWrongKeys: It is broken.");
}

TEST(Failure, IsShownByItsDiagnosticWhenItHasNoText) {
    EXPECT_EQ((Failure{"CWrongKeys", "", "", "the whole\nchain"}.toString()), "CWrongKeys: the whole\nchain");
}

TEST(Failure, IsADocumentOfFourFields) {
    EXPECT_EQ((Failure{"CWrongKeys", "E-42", "It is broken.", "chain"}.toJson().dump()),
              R"({"name":"CWrongKeys","supportCode":"E-42","text":"It is broken.","diagnostic":"chain"})");
}

TEST(DescribeCurrentException, TellsWhatTheCoreThrewTwoHopsAway) {
    const auto atTheCore = [] { DAX_THROW(CUSBReadError(), "It is broken." << errinfo_supportcode("E-42")); };
    const Failure failure = failureOf([&] { overTheBus([&] { overTheBus(atTheCore); }); });
    EXPECT_EQ(failure.name, "CUSBReadError");
    EXPECT_EQ(failure.supportCode, "E-42");
    EXPECT_EQ(failure.text, "It is broken.");
    EXPECT_THAT(failure.diagnostic, StartsWith("Remote method 'startInstallation' raised 'CUSBReadError' with {\n"));
}

TEST(DescribeCurrentException, TellsADescriptionThatCameOverTheBus) {
    const auto far = [] { DAX_THROW(CUSBReadError(), errinfo_description("It is broken.")); };
    EXPECT_EQ(failureOf([&] { overTheBus(far); }).toString(), "CUSBReadError: It is broken.");
}

TEST(DescribeCurrentException, TellsTheDiagnosticOfAnExceptionWithoutAText) {
    const Failure failure = failureOf([] { overTheBus([] { DAX_EXCEPTION(CUSBReadError()).throwException(); }); });
    EXPECT_EQ(failure.text, "");
    EXPECT_EQ(failure.toString(), "CUSBReadError: " + failure.diagnostic);
}

TEST(DescribeCurrentException, NamesAnExceptionWithoutABusNameAsTheBusDoes) {
    const auto far = [] { DAX_THROW(UserInterestExceptions::ServiceRevokedException(), "It is over."); };
    EXPECT_EQ(failureOf([&] { overTheBus(far); }).toString(), "DAXUnknownException: It is over.");
}

TEST(DescribeCurrentException, TellsWhatPreventedTheCall) {
    const auto nameOf = [](auto exception) {
        const Failure failure = failureOf([&] { DAX_THROW(exception, "No way."); });
        EXPECT_EQ(failure.supportCode, "");
        EXPECT_EQ(failure.text, "No way.");
        EXPECT_THAT(failure.diagnostic, HasSubstr("No way."));
        return failure.name;
    };
    EXPECT_EQ(nameOf(Wrapper::ErrorConnectingToDBUS()), "ErrorConnectingToDBUS");
    EXPECT_EQ(nameOf(Wrapper::RemoteObjectActivationTimedOut()), "RemoteObjectActivationTimedOut");
    EXPECT_EQ(nameOf(Wrapper::RemoteObjectNotAccessible()), "RemoteObjectNotAccessible");
}

TEST(DescribeCurrentException, TellsWhatAnyOtherExceptionSays) {
    const Failure failure = failureOf([] { throw std::runtime_error("It is broken."); });
    EXPECT_EQ(failure.toString(), "Error: It is broken.");
    EXPECT_EQ(failure.diagnostic, "It is broken.");
}

} // namespace
} // namespace DAX::Tests
