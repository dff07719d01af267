#include <fstream>
#include <iterator>

#include "Common/IO/FileExceptions.h"
#include "Platform/Product/IProductInfo.h"
#include "TransactionFixture.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class FinalizationTest : public TransactionFixture {
protected:
    // The report in the lock file, without the record around it.
    std::string report() const {
        std::ifstream file(lockPath(), std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        return bytes.size() < 18 ? "<no lock file>" : bytes.substr(4, bytes.size() - 18);
    }

    // The report of an upgrade from version 1000 that was asked for by this type.
    std::string reportOf(int upgradeType, int scope) {
        coreFinds(std::string("1100"), scope);
        const auto transaction = makeTransaction(upgradeType);
        transaction->startInstallation({});
        transaction->startFinalization({}, false);
        return report();
    }
};

TEST_F(FinalizationTest, ClearsTheKeyTakesTheLockAndThenTellsTheCore) {
    coreFinds(std::string("1100"), 2);
    const auto transaction = makeTransaction();
    transaction->startInstallation({"a"});
    forget();
    transaction->startFinalization({"b", "a"}, true);
    EXPECT_THAT(journal(),
                ElementsAre("log INF Acquiring INSTALLATION LOCK.", write(RELEASED_KEY, 0),
                            "log INF Preparing information about upgrade which is going to be installed.",
                            "log INF Upgrade information has been prepared.",
                            "log INF Upgrade info: Type: OTN(F) from: 1000 to: 1100",
                            "log INF Upgrade info saved in file: " + lockPath(), "log INF Starting finalizations.",
                            "core startFinalization({a, b}, {1, 2, 255}, 1)"));
}

TEST_F(FinalizationTest, LocksTheInstallation) {
    const auto transaction = makeTransaction();
    EXPECT_FALSE(Platform::IProductInfo::isInstallationLocked());
    transaction->startFinalization({}, false);
    EXPECT_TRUE(Platform::IProductInfo::isInstallationLocked());
    EXPECT_EQ(report(), "Type: OTN from: 1000 to: ");
}

TEST_F(FinalizationTest, ReportsAnOtnUpgradeOfScopeTwo) {
    EXPECT_EQ(reportOf(DAXCommon::OTN, 2), "Type: OTN(F) from: 1000 to: 1100");
}

class ReportedType : public FinalizationTest, public ::testing::WithParamInterface<std::pair<int, const char*>> {};

TEST_P(ReportedType, IsTheOneThatWasAskedFor) {
    script->searchResult.upgradeType = DAXCommon::POSTPONE;
    EXPECT_EQ(reportOf(GetParam().first, 0), std::string("Type: ") + GetParam().second + " from: 1000 to: 1100");
}

INSTANTIATE_TEST_SUITE_P(AllTypes, ReportedType,
                         ::testing::Values(std::make_pair(0, "UNDEFINED"), std::make_pair(1, "OTA"),
                                           std::make_pair(2, "OTN"), std::make_pair(3, "USB"),
                                           std::make_pair(4, "POSTPONE")));

class ReportedScope : public FinalizationTest, public ::testing::WithParamInterface<std::pair<int, const char*>> {};

TEST_P(ReportedScope, FollowsTheType) {
    EXPECT_EQ(reportOf(DAXCommon::USB, GetParam().first),
              std::string("Type: USB") + GetParam().second + " from: 1000 to: 1100");
}

INSTANTIATE_TEST_SUITE_P(AllScopes, ReportedScope,
                         ::testing::Values(std::make_pair(-1, ""), std::make_pair(0, ""), std::make_pair(1, "(FP)"),
                                           std::make_pair(2, "(F)"), std::make_pair(3, "(P)"), std::make_pair(4, "")));

TEST_F(FinalizationTest, ReportsTheVersionThatRanWhenTheTransactionWasMade) {
    coreFinds(std::string("1100"));
    const auto transaction = makeTransaction();
    script->currentVersion = "1050";
    transaction->startInstallation({});
    transaction->startFinalization({}, false);
    EXPECT_EQ(report(), "Type: OTN from: 1000 to: 1100");
}

TEST_F(FinalizationTest, ReportsTheLastVersionThatASearchShowed) {
    const auto transaction = makeTransaction();
    coreFinds(std::string("1100"), 1);
    transaction->getSearchResult();
    coreFinds(std::string("WOC_ONLY_VERSION"), 3);
    transaction->getSearchResult();
    transaction->startFinalization({}, false);
    EXPECT_EQ(report(), "Type: OTN(P) from: 1000 to: 1100");
}

TEST_F(FinalizationTest, AFailedSearchLeavesTheReportedVersionAndScope) {
    const auto transaction = makeTransaction();
    coreFinds(std::string("1100"), 2);
    transaction->getSearchResult();
    coreFindsNothing();
    transaction->getSearchResult();
    transaction->startFinalization({}, false);
    EXPECT_EQ(report(), "Type: OTN(F) from: 1000 to: 1100");
}

TEST_F(FinalizationTest, ReadingTheResultDoesNotPickTheUpgrade) {
    coreFinds(std::string("1100"));
    const auto transaction = makeTransaction();
    transaction->getSearchResult();
    transaction->startFinalization({}, false);
    EXPECT_EQ(script->calls().back(), "startFinalization({}, none, 0)");
}

TEST_F(FinalizationTest, ReadingTheResultDoesNotDropThePickedUpgrade) {
    coreFinds(std::string("1100"));
    const auto transaction = makeTransaction();
    transaction->startInstallation({});
    coreFindsNothing();
    transaction->getSearchResult();
    transaction->startFinalization({}, false);
    EXPECT_EQ(script->calls().back(), "startFinalization({}, {1, 2, 255}, 0)");
}

TEST_F(FinalizationTest, AnInstallationWithoutAnUpgradeDropsTheOneOfBefore) {
    coreFinds(std::string("1100"));
    const auto transaction = makeTransaction();
    transaction->startInstallation({});
    coreFindsNothing();
    transaction->startInstallation({});
    transaction->startFinalization({}, false);
    EXPECT_EQ(script->calls().back(), "startFinalization({}, none, 0)");
}

TEST_F(FinalizationTest, AnInstallationWhoseResultFailsDropsTheOneOfBefore) {
    coreFinds(std::string("1100"));
    const auto transaction = makeTransaction();
    transaction->startInstallation({});
    script->failOnce("getSearchResult", std::runtime_error("no core"));
    EXPECT_THROW(transaction->startInstallation({}), std::runtime_error);
    transaction->startFinalization({}, false);
    EXPECT_EQ(script->calls().back(), "startFinalization({}, none, 0)");
}

TEST_F(FinalizationTest, AFailedWriteOfTheKeyIsLoggedAndStopsNothing) {
    const auto transaction = makeTransaction();
    FakeKovan::failWrites(RELEASED_KEY, -7);
    transaction->startFinalization({}, false);
    EXPECT_THAT(logged("ERR"),
                AllOf(StartsWith("Error occurred while accessing to IVConf InstallationLockReleasedKey: "),
                      HasSubstr("Dynamic exception type"), HasSubstr(RELEASED_KEY)));
    EXPECT_TRUE(Platform::IProductInfo::isInstallationLocked());
    EXPECT_EQ(script->calls().back(), "startFinalization({}, none, 0)");
}

TEST_F(FinalizationTest, WithoutACurrentVersionFailsAfterTheKeyAndBeforeTheLock) {
    script->currentVersion = "";
    const auto transaction = makeTransaction();
    EXPECT_EQ(thrownDescription([&] { transaction->startFinalization({}, false); }), "getCurrentVersion is empty");
    EXPECT_THAT(journal(), ElementsAre("log INF Acquiring INSTALLATION LOCK.", write(RELEASED_KEY, 0),
                                       "log INF Preparing information about upgrade which is going to be installed."));
    EXPECT_FALSE(Platform::IProductInfo::isInstallationLocked());
}

TEST_F(FinalizationTest, AnUnknownUpgradeTypeFailsBeforeTheVersionIsLookedAt) {
    script->currentVersion = "";
    const auto transaction = makeTransaction(5);
    EXPECT_EQ(thrownDescription([&] { transaction->startFinalization({}, false); }), "upgradeType key out of range");
    EXPECT_FALSE(Platform::IProductInfo::isInstallationLocked());
}

TEST_F(FinalizationTest, ALockFileThatCannotBeWrittenKeepsTheCoreFromFinalizing) {
    const auto transaction = makeTransaction();
    std::filesystem::remove_all(Platform::IProductPaths::getDAXPartitionPath().string());
    EXPECT_EQ((thrownText<Common::Utils::errinfo_stream_text, Common::IO::FileSinkIOException>(
                  [&] { transaction->startFinalization({}, false); })),
              " errno=2 (No such file or directory)");
    EXPECT_EQ(journal().back(), "log INF Upgrade information has been prepared.");
    EXPECT_FALSE(Platform::IProductInfo::isInstallationLocked());
}

TEST_F(FinalizationTest, AFailureOfTheCoreLeavesTheLockInForce) {
    const auto transaction = makeTransaction();
    script->fail("startFinalization", std::runtime_error("no core"));
    EXPECT_THROW(transaction->startFinalization({}, false), std::runtime_error);
    EXPECT_TRUE(Platform::IProductInfo::isInstallationLocked());
}

} // namespace
} // namespace DAX::Tests
