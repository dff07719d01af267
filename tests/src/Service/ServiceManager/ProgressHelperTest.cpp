#include "Service/ServiceManager/ProgressHelper.h"

#include <iostream>
#include <sstream>

#include <boost/optional/optional_io.hpp>
#include <boost/serialization/nvp.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Common/XML/XMLInput.h"
#include "Common/XML/XMLOutput.h"
#include "DAXCommon/UserInterestExceptions.h"
#include "SteadyTime.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "support/ProcessDeath.h"

namespace DAX::Tests {
namespace {

using namespace UserInterestExceptions;
using namespace std::chrono_literals;
using boost::serialization::make_nvp;
using Service::ServiceManager::ProgressHelper;
using ::testing::AllOf;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;

const char UNSUPPORTED[] = "Support for this exception type was not yet implemented.";

template <class E>
boost::exception_ptr pointerTo() {
    return DAX_EXCEPTION(E()).getExceptionPtr();
}

void expectProgress(ProgressHelper& helper, int result, int percent, float detail) {
    const Service::ServiceTransactionProgress progress = helper.getProgress();
    EXPECT_EQ(progress.result, result);
    EXPECT_EQ(progress.progressPercent, percent);
    EXPECT_EQ(progress.progressDetail, boost::optional<float>(detail));
}

class Progress : public ::testing::Test {
protected:
    SteadyTime time;
};

TEST_F(Progress, BeforeTheStartIsAnAssertionFailure) {
    EXPECT_ASSERTION(ProgressHelper(10).getProgress(), "m_startTime");
}

TEST_F(Progress, IsZeroAtTheStart) {
    ProgressHelper helper(10);
    helper.startProgress();
    expectProgress(helper, 1, 0, 0);
}

TEST_F(Progress, TellsWholeSecondsAndTheirShare) {
    ProgressHelper helper(10);
    helper.startProgress();
    time.pass(3s);
    expectProgress(helper, 1, 30, 3);
    time.pass(999ms);
    expectProgress(helper, 1, 30, 3);
    time.pass(1ms);
    expectProgress(helper, 1, 40, 4);
}

TEST_F(Progress, CutsItsPercentOff) {
    ProgressHelper helper(3);
    helper.startProgress();
    time.pass(2s);
    expectProgress(helper, 1, 66, 2);
}

TEST_F(Progress, IsDoneWhenItsTimeIsOver) {
    ProgressHelper helper(10);
    helper.startProgress();
    time.pass(9999ms);
    expectProgress(helper, 1, 90, 9);
    time.pass(1ms);
    expectProgress(helper, 2, 100, 0);
    time.pass(1000h);
    expectProgress(helper, 2, 100, 0);
}

TEST_F(Progress, OfAStepWithoutTimeIsDoneAtOnce) {
    ProgressHelper helper(0);
    helper.startProgress();
    expectProgress(helper, 2, 100, 0);
}

TEST_F(Progress, OfTheLongestStepDoesNotOverflow) {
    ProgressHelper helper(2147483647);
    helper.startProgress();
    time.pass(std::chrono::seconds(2147483646));
    expectProgress(helper, 1, 99, 2147483646.0F);
}

TEST_F(Progress, BeginsAgainAtASecondStart) {
    ProgressHelper helper(10);
    helper.startProgress();
    time.pass(10s);
    expectProgress(helper, 2, 100, 0);
    helper.startProgress();
    expectProgress(helper, 1, 0, 0);
}

TEST_F(Progress, FailsOnlyAfterTheTimeOfItsFailure) {
    ProgressHelper helper(10, 4, pointerTo<CWrongKeys>());
    helper.startProgress();
    time.pass(4999ms);
    expectProgress(helper, 1, 40, 4);
    time.pass(1ms);
    EXPECT_THROW(helper.getProgress(), CWrongKeys);
    time.pass(100s);
    EXPECT_THROW(helper.getProgress(), CWrongKeys);
}

TEST_F(Progress, OfAStepThatFailedCanBeginAgain) {
    ProgressHelper helper(10, 0, pointerTo<CUSBReadError>());
    helper.startProgress();
    time.pass(1s);
    EXPECT_THROW(helper.getProgress(), CUSBReadError);
    helper.startProgress();
    expectProgress(helper, 1, 0, 0);
}

TEST_F(Progress, WithAFailureAfterItsEndIsAnAssertionFailure) {
    ProgressHelper helper(4, 4, pointerTo<CWrongKeys>());
    helper.startProgress();
    EXPECT_ASSERTION(helper.getProgress(), "*m_throwAfterSeconds < m_executingTimeInSeconds");
}

TEST_F(Progress, WithoutATimeOfFailureNeverThrowsItsException) {
    ProgressHelper helper(1, boost::none, pointerTo<CWrongKeys>());
    helper.startProgress();
    time.pass(5s);
    expectProgress(helper, 2, 100, 0);
}

// --- As an archive

std::string written(const ProgressHelper& helper) {
    std::ostringstream text;
    Common::XML::XMLOutput archive(text);
    archive << make_nvp("step", helper);
    return text.str();
}

std::string document(const std::string& seconds, const std::string& name) {
    std::string text = written(ProgressHelper(10, 4, pointerTo<CWrongKeys>()));
    text.replace(text.find(">4<") + 1, 1, seconds);
    return text.replace(text.find("CWrongKeys"), 10, name);
}

ProgressHelper read(const std::string& text) {
    std::istringstream file(text);
    ProgressHelper helper(0, 0, boost::exception_ptr());
    Common::XML::XMLInput(file) >> make_nvp("step", helper);
    return helper;
}

TEST_F(Progress, IsWrittenInItsOrder) {
    EXPECT_THAT(written(ProgressHelper(10, 4, pointerTo<CWrongKeys>())),
                HasSubstr("<step class_id=\"0\" tracking_level=\"0\" version=\"0\">\n"
                          "\t<workingTimeInSeconds>10</workingTimeInSeconds>\n"
                          "\t<throwAfterSeconds>4</throwAfterSeconds>\n"
                          "\t<Exception>CWrongKeys</Exception>\n"
                          "</step>\n"));
}

TEST_F(Progress, IsReadAsItWasWritten) {
    ProgressHelper helper = read(document("2", "CNetworkTransferError"));
    helper.startProgress();
    time.pass(2s);
    expectProgress(helper, 1, 20, 2);
    time.pass(1s);
    EXPECT_THROW(helper.getProgress(), CNetworkTransferError);
}

template <class E>
class NamedException : public Progress {};

struct Names {
    template <class E>
    static std::string GetName(int);
};
template <>
std::string Names::GetName<CNetworkTransferError>(int) {
    return "CNetworkTransferError";
}
template <>
std::string Names::GetName<CImageCorrupted>(int) {
    return "CImageCorrupted";
}
template <>
std::string Names::GetName<CWrongKeys>(int) {
    return "CWrongKeys";
}
template <>
std::string Names::GetName<CUSBReadError>(int) {
    return "CUSBReadError";
}
template <>
std::string Names::GetName<DAXUnknownException>(int) {
    return "DAXUnknownException";
}

using Supported =
    ::testing::Types<CNetworkTransferError, CImageCorrupted, CWrongKeys, CUSBReadError, DAXUnknownException>;
TYPED_TEST_SUITE(NamedException, Supported, Names);

TYPED_TEST(NamedException, IsWrittenByItsName) {
    EXPECT_THAT(written(ProgressHelper(10, 4, pointerTo<TypeParam>())),
                HasSubstr("<Exception>" + Names::GetName<TypeParam>(0) + "</Exception>"));
}

TYPED_TEST(NamedException, IsReadByItsName) {
    ProgressHelper helper = read(document("4", Names::GetName<TypeParam>(0)));
    helper.startProgress();
    this->time.pass(5s);
    EXPECT_THROW(helper.getProgress(), TypeParam);
}

TEST_F(Progress, WithAnExceptionWithoutANameCannotBeWritten) {
    const ProgressHelper helper(10, 4, pointerTo<CUpdateFailed>());
    EXPECT_EXIT(
        {
            FakeKovan::echoLogToStderr(true);
            written(helper);
        },
        ::testing::KilledBySignal(SIGABRT),
        AllOf(ContainsRegex("\\[INF\\][^\n]*>Support for this exception type was not yet implemented: [^\n]*Throw"),
              HasSubstr("CUpdateFailed"), HasSubstr(std::string("\nMESSAGE: ") + UNSUPPORTED + "\n")));
}

TEST_F(Progress, WithAnUnknownNameCannotBeRead) {
    const std::string text = document("4", "CUpdateFailed");
    EXPECT_EXIT(
        {
            FakeKovan::echoLogToStderr(true);
            read(text);
        },
        ::testing::KilledBySignal(SIGABRT),
        AllOf(ContainsRegex("\\[INF\\][^\n]*>Support for this exception type was not yet implemented: CUpdateFailed\n"),
              HasSubstr(std::string("\nMESSAGE: ") + UNSUPPORTED + "\n")));
}

TEST_F(Progress, WithoutATimeOfFailureCannotBeWritten) {
    const ProgressHelper helper(10);
    EXPECT_ASSERTION(written(helper), "this->is_initialized()");
}

TEST_F(Progress, IsWrittenUpToItsWorkingTimeBeforeTheTimeOfFailureIsMissed) {
    const ProgressHelper helper(10);
    EXPECT_EXIT(
        {
            FakeKovan::echoLogToStderr(true);
            Common::XML::XMLOutput archive(std::cerr);
            archive << make_nvp("step", helper);
        },
        ::testing::KilledBySignal(SIGABRT),
        ContainsRegex(
            "<workingTimeInSeconds>10</workingTimeInSeconds>(.|\n)*>ASSERTION FAILED: this->is_initialized\\(\\), "));
}

TEST_F(Progress, CannotBeReadIntoOneWithoutATimeOfFailure) {
    std::istringstream file(document("4", "CWrongKeys"));
    ProgressHelper helper(0);
    EXPECT_ASSERTION(Common::XML::XMLInput(file) >> make_nvp("step", helper), "this->is_initialized()");
}

TEST_F(Progress, FailsInTheWorkingTimeBeforeItFailsInWhatFollows) {
    std::istringstream file(document("4", "CWrongKeys").replace(document("4", "CWrongKeys").find(">10<"), 4, ">x<"));
    ProgressHelper helper(0);
    EXPECT_THROW(Common::XML::XMLInput(file) >> make_nvp("step", helper), boost::archive::archive_exception);
}

} // namespace
} // namespace DAX::Tests
