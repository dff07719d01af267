#include "Service/ServiceManager/CServiceTransactionStub.h"

#include <algorithm>
#include <filesystem>

#include <boost/archive/archive_exception.hpp>
#include <boost/optional/optional_io.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Common/IO/FileExceptions.h"
#include "DAXCommon/UserInterestExceptions.h"
#include "Service/ServiceManager/Implementation/CService.h"
#include "ServiceFixture.h"
#include "SteadyTime.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "support/ProcessDeath.h"

namespace DAX::Tests {
namespace {

using namespace std::chrono_literals;
using boost::archive::archive_exception;
using Service::ServiceTransactionProgress;
using Service::ServiceManager::CService;
using Service::ServiceManager::CServiceTransactionStub;
using Service::ServiceManager::ProgressHelper;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// A stub whose steps take 10, 20 and 40 seconds, and fail in the end; the root is its working directory.
class Stub : public ServiceFixture {
protected:
    Stub() : m_before(std::filesystem::current_path()) { std::filesystem::current_path(root.path()); }
    ~Stub() override { std::filesystem::current_path(m_before); }

    template <class E>
    static ProgressHelper failingStep(int seconds, int after) {
        return ProgressHelper(seconds, after, DAX_EXCEPTION(E()).getExceptionPtr());
    }

    static int percentOf(const ServiceTransactionProgress& progress) { return progress.progressPercent; }

    SteadyTime time;
    CServiceTransactionStub stub{failingStep<UserInterestExceptions::CNetworkTransferError>(10, 8),
                                 failingStep<UserInterestExceptions::CImageCorrupted>(20, 18),
                                 failingStep<UserInterestExceptions::CWrongKeys>(40, 38)};

private:
    const std::filesystem::path m_before;
};

TEST_F(Stub, SearchingIsAlwaysPossible) {
    EXPECT_EQ(stub.isSearchingPossible(), boost::optional<bool>(true));
}

TEST_F(Stub, PlaysEachStepOnItsOwn) {
    stub.startSearching("anything");
    time.pass(4s);
    stub.startInstallation({"any", "item"});
    time.pass(2s);
    stub.startFinalization({}, true);
    time.pass(2s);
    EXPECT_EQ(percentOf(stub.getSearchProgress()), 80);
    EXPECT_EQ(percentOf(stub.getInstallationProgress()), 20);
    EXPECT_EQ(percentOf(stub.getFinalizationProgress()), 5);
    time.pass(100s);
    EXPECT_THROW(stub.getSearchProgress(), UserInterestExceptions::CNetworkTransferError);
    EXPECT_THROW(stub.getInstallationProgress(), UserInterestExceptions::CImageCorrupted);
    EXPECT_THROW(stub.getFinalizationProgress(), UserInterestExceptions::CWrongKeys);
}

TEST_F(Stub, SearchesForModelsAsItSearches) {
    stub.startModelsSearching();
    time.pass(5s);
    EXPECT_EQ(percentOf(stub.getSearchProgress()), 50);
    EXPECT_THAT(stub.getModelsSearchResult(), IsEmpty());
}

TEST_F(Stub, AStepThatHasNotBeenStartedIsAnAssertionFailure) {
    EXPECT_ASSERTION(stub.getSearchProgress(), "m_startTime");
    EXPECT_ASSERTION(stub.getInstallationProgress(), "m_startTime");
    EXPECT_ASSERTION(stub.getFinalizationProgress(), "m_startTime");
}

TEST_F(Stub, FindsAnUpgradeWithoutItsInformation) {
    const Service::ServiceSearchResult result = stub.getSearchResult();
    EXPECT_EQ(result.result, 2);
    ASSERT_TRUE(result.upgrade);
    EXPECT_EQ(result.upgrade->upgradeType, 2);
    EXPECT_THAT(result.upgrade->upgradeId, ElementsAre(0));
    EXPECT_EQ(result.upgrade->version, std::string("1666.1234"));
    EXPECT_THAT(result.upgrade->updateInfo, IsEmpty());
    EXPECT_EQ(result.upgrade->kind, 0);
    EXPECT_EQ(result.upgrade->scope, 2);
}

TEST_F(Stub, TakesTheInformationFromTheWorkingDirectory) {
    for (const std::size_t size : {0U, 1U, 1023U, 1024U, 1025U, 2048U, 5000U}) {
        std::string text(size, 'x');
        std::generate(text.begin(), text.end(), [n = 0]() mutable { return static_cast<char>(n++ * 7); });
        root.write("update_info.xml", text);
        const auto info = stub.getSearchResult().upgrade->updateInfo;
        EXPECT_EQ(std::string(info.begin(), info.end()), text) << size;
    }
}

TEST_F(Stub, AnUnreadableInformationIsNotLeftOut) {
    std::filesystem::create_directory("update_info.xml");
    EXPECT_THROW(stub.getSearchResult(), Common::IO::FileStreamIOException);
}

TEST_F(Stub, SaysWhyItIsCancelled) {
    forget();
    stub.cancelServiceTransaction("some reason");
    EXPECT_THAT(journal(), ElementsAre("log INF CServiceTransactionStub - cancelServiceTransaction(): some reason"));
}

TEST_F(Stub, SavesItsStepsInOrder) {
    stub.save("scenario.xml");
    EXPECT_EQ(root.read("scenario.xml"), "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\" ?>\n"
                                         "<!DOCTYPE boost_serialization>\n"
                                         "<boost_serialization signature=\"serialization::archive\" version=\"18\">\n"
                                         "<searchingProgress class_id=\"0\" tracking_level=\"0\" version=\"0\">\n"
                                         "\t<workingTimeInSeconds>10</workingTimeInSeconds>\n"
                                         "\t<throwAfterSeconds>8</throwAfterSeconds>\n"
                                         "\t<Exception>CNetworkTransferError</Exception>\n"
                                         "</searchingProgress>\n"
                                         "<installationProgress>\n"
                                         "\t<workingTimeInSeconds>20</workingTimeInSeconds>\n"
                                         "\t<throwAfterSeconds>18</throwAfterSeconds>\n"
                                         "\t<Exception>CImageCorrupted</Exception>\n"
                                         "</installationProgress>\n"
                                         "<finalizationProgress>\n"
                                         "\t<workingTimeInSeconds>40</workingTimeInSeconds>\n"
                                         "\t<throwAfterSeconds>38</throwAfterSeconds>\n"
                                         "\t<Exception>CWrongKeys</Exception>\n"
                                         "</finalizationProgress>\n"
                                         "</boost_serialization>\n\n");
}

TEST_F(Stub, CannotBeSavedWithoutAFolder) {
    EXPECT_THROW(stub.save("no folder/scenario.xml"), archive_exception);
}

TEST_F(Stub, WithAStepThatCannotFailCannotBeSaved) {
    const CServiceTransactionStub endless(ProgressHelper(1), ProgressHelper(1), ProgressHelper(1));
    EXPECT_ASSERTION(endless.save("scenario.xml"), "this->is_initialized()");
}

TEST_F(Stub, AGoodScenarioEndsTheProcess) {
    stub.save("scenario.xml");
    EXPECT_ASSERTION(CServiceTransactionStub::load("scenario.xml"), "this->is_initialized()");
}

TEST_F(Stub, AMissingScenarioThrows) {
    EXPECT_THROW(CServiceTransactionStub::load("scenario.xml"), archive_exception);
}

TEST_F(Stub, AFileThatIsNoScenarioThrows) {
    for (const char* text : {"", "text", "<?xml version=\"1.0\"?>", "\xff"}) {
        root.write("scenario.xml", text);
        EXPECT_THROW(CServiceTransactionStub::load("scenario.xml"), archive_exception) << text;
    }
}

TEST_F(Stub, AScenarioThatEndsBeforeTheFirstWorkingTimeThrows) {
    stub.save("scenario.xml");
    const std::string text = root.read("scenario.xml");
    const std::string element = "</workingTimeInSeconds>";
    const std::size_t end = text.find(element) + element.size();
    for (std::size_t length = 0; length < end; ++length) {
        root.write("scenario.xml", text.substr(0, length));
        EXPECT_THROW(CServiceTransactionStub::load("scenario.xml"), archive_exception) << length;
    }
}

// --- In a session

class StubInASession : public Stub {
protected:
    StubInASession() {
        debugParameters.read({{"serviceTransactionStubScenarioPath", "scenario.xml"}});
        forget();
    }

    CService session{core, rank(1), "client", purpose(2)};
};

TEST_F(StubInASession, AStaleScenarioThrowsAndLeavesTheSessionValid) {
    EXPECT_THROW(session.startNewTransaction(DAXCommon::OTN), archive_exception);
    EXPECT_THROW(session.startNewTransaction(DAXCommon::OTN), archive_exception);
    EXPECT_THAT(script->takeCalls(), IsEmpty());
    forget();
    session.invalidate("reason");
    EXPECT_THAT(journal(),
                ElementsAre("log INF Transaction does not exist. Nothing to do.", "log INF Invalidate done."));
}

TEST_F(StubInASession, AStaleScenarioTakesThePlaceOfTheEarlierTransactionAllTheSame) {
    debugParameters.read({});
    EXPECT_TRUE(session.startNewTransaction(DAXCommon::OTN));
    script->takeCalls();
    debugParameters.read({{"serviceTransactionStubScenarioPath", "scenario.xml"}});
    EXPECT_THROW(session.startNewTransaction(DAXCommon::OTN), archive_exception);
    EXPECT_THAT(script->takeCalls(), ElementsAre(::testing::StartsWith("cancelCoreTransaction(")));
    EXPECT_EQ(script->liveTransactions(), 0);
}

TEST_F(StubInASession, AGoodScenarioEndsTheProcess) {
    stub.save("scenario.xml");
    EXPECT_ASSERTION(session.startNewTransaction(DAXCommon::OTN), "this->is_initialized()");
}

} // namespace
} // namespace DAX::Tests
