#include <functional>
#include <map>
#include <tuple>

#include <boost/optional/optional_io.hpp>

#include "DAXCommon/UserInterestExceptions.h"
#include "Service/ServiceManager/Implementation/SearchingDateRegister.h"
#include "TransactionFixture.h"
#include "support/ProcessDeath.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using Service::IServiceTransaction;
using Service::ServiceSearchResult;
using Service::ServiceTransactionProgress;
using Service::ServiceManager::CServiceTransaction;
using Service::ServiceManager::SearchingDateRegister;
using ::testing::ContainsRegex;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using UserInterestExceptions::CWrongKeys;

using CServiceTransactionTest = TransactionFixture;

const char FOUND_SUCCESS[] = "log INF Getting search result for Core. The result is: 2 (TRANSACTION_SUCCESS).";
const char FOUND_FAILED[] = "log INF Getting search result for Core. The result is: 3 (TRANSACTION_FAILED).";

TEST_F(CServiceTransactionTest, AsksForTheVersionBeforeItCreatesTheCoreTransaction) {
    const CServiceTransaction transaction(core, {DAXCommon::USB, purpose(5), true, true});
    EXPECT_THAT(journal(), ElementsAre("core getCurrentVersion()",
                                       "core createTransaction(upgradeType 3, transactionType 5, cellular 1, "
                                       "upgraded 1)"));
}

TEST_F(CServiceTransactionTest, IsNotMadeWhenTheCoreRefuses) {
    script->refusesTransactions = true;
    EXPECT_EQ(thrownDescription([&] { CServiceTransaction(core, {}); }), "Core refused to create a transaction.");
}

TEST_F(CServiceTransactionTest, ForwardsWhetherSearchingIsPossible) {
    const auto transaction = makeTransaction();
    script->searchingPossible = false;
    EXPECT_EQ(transaction->isSearchingPossible(), boost::optional<bool>(false));
    script->searchingPossible = boost::none;
    EXPECT_EQ(transaction->isSearchingPossible(), boost::none);
    EXPECT_THAT(journal(), ElementsAre("core isSearchingPossible()", "core isSearchingPossible()"));
}

TEST_F(CServiceTransactionTest, ForwardsTheSearchForModels) {
    makeTransaction(DAXCommon::OTN, 2)->startModelsSearching();
    EXPECT_THAT(journal(), ElementsAre("core startModelsSearching()"));
}

TEST_F(CServiceTransactionTest, CountsTheModelsInTheLog) {
    script->models = {"A1", "B2", "A1"};
    EXPECT_THAT(makeTransaction()->getModelsSearchResult(), ElementsAre("A1", "B2", "A1"));
    EXPECT_THAT(journal(), ElementsAre("core getModelsSearchResult()",
                                       "log INF Getting models list search result for Core. The models count is: 3"));
}

TEST_F(CServiceTransactionTest, RecordsTheDateOfADatedSearchAfterTheCoreWasTold) {
    FakeKovan::setLocalTime(1700000000);
    const auto transaction = makeTransaction(DAXCommon::OTN, 2);
    transaction->startSearching("what");
    EXPECT_THAT(journal(),
                ElementsAre("core startSearching(what)", "log INF Current local time and date: 1700000000",
                            "log INF Date: 20231114T221320 will be saved in file: " +
                                (root / "mnt/systemrw/org.kovan.tv.dax/data/tv/LastSearchingDate").string()));
}

class UndatedSearch : public TransactionFixture, public ::testing::WithParamInterface<int> {};

TEST_P(UndatedSearch, OnlyTellsTheCore) {
    makeTransaction(DAXCommon::OTN, GetParam())->startSearching("what");
    EXPECT_THAT(journal(), ElementsAre("core startSearching(what)"));
}

INSTANTIATE_TEST_SUITE_P(AllOtherTypes, UndatedSearch, ::testing::Values(-2, 0, 1, 3, 22));

TEST_F(CServiceTransactionTest, AFailedSearchOfTheCoreWritesNoDate) {
    script->fail("startSearching", CWrongKeys());
    EXPECT_THROW(makeTransaction(DAXCommon::OTN, 2)->startSearching("what"), CWrongKeys);
    EXPECT_FALSE(std::filesystem::exists(Platform::IProductPaths::getLastSearchingDateFilePath().string()));
}

TEST_F(CServiceTransactionTest, ADateThatCannotBeWrittenFailsTheSearchThatRuns) {
    std::filesystem::create_directories(Platform::IProductPaths::getLastSearchingDateFilePath().string());
    EXPECT_THROW(makeTransaction(DAXCommon::OTN, 2)->startSearching("what"),
                 SearchingDateRegister::FailToOpenExistingFileException);
    EXPECT_THAT(script->calls(), ElementsAre("startSearching(what)"));
}

struct ProgressGetter {
    const char* call;
    Core::TransactionProgress FakeCoreScript::*answer;
    ServiceTransactionProgress (IServiceTransaction::*get)();
};

class ProgressMapping : public TransactionFixture,
                        public ::testing::WithParamInterface<std::tuple<ProgressGetter, int>> {};

TEST_P(ProgressMapping, KeepsTheNumberOfTheResultAndCopiesTheRest) {
    const auto& [getter, result] = GetParam();
    (*script).*getter.answer = {static_cast<Core::ETransactionResult>(result), 250, 1.5F};
    const auto transaction = makeTransaction();
    const ServiceTransactionProgress progress = (*transaction.*getter.get)();
    EXPECT_EQ(progress.result, result > 3 ? 0 : result);
    EXPECT_EQ(progress.progressPercent, 250);
    EXPECT_EQ(progress.progressDetail, boost::optional<float>(1.5F));
    EXPECT_THAT(journal(), ElementsAre(std::string("core ") + getter.call));
}

TEST_P(ProgressMapping, CopiesAnAbsentDetail) {
    const auto& [getter, result] = GetParam();
    (*script).*getter.answer = {static_cast<Core::ETransactionResult>(result), -1, boost::none};
    const auto transaction = makeTransaction();
    const ServiceTransactionProgress progress = (*transaction.*getter.get)();
    EXPECT_EQ(progress.progressPercent, -1);
    EXPECT_EQ(progress.progressDetail, boost::none);
}

INSTANTIATE_TEST_SUITE_P(
    AllGettersAndResults, ProgressMapping,
    ::testing::Combine(
        ::testing::Values(ProgressGetter{"getSearchProgress()", &FakeCoreScript::searchProgress,
                                         &IServiceTransaction::getSearchProgress},
                          ProgressGetter{"getInstallationProgress()", &FakeCoreScript::installationProgress,
                                         &IServiceTransaction::getInstallationProgress},
                          ProgressGetter{"getFinalizationProgress()", &FakeCoreScript::finalizationProgress,
                                         &IServiceTransaction::getFinalizationProgress}),
        ::testing::Values(0, 1, 2, 3, 4)));

TEST_F(CServiceTransactionTest, ShowsAFailedSearchWithoutAnUpgrade) {
    coreFindsNothing();
    const ServiceSearchResult result = makeTransaction()->getSearchResult();
    EXPECT_EQ(result.result, Service::SERVICE_TRANSACTION_FAILED);
    EXPECT_FALSE(result.upgrade);
    EXPECT_THAT(journal(), ElementsAre("core getSearchResult()", FOUND_FAILED));
}

TEST_F(CServiceTransactionTest, ShowsTheUpgradeAsTheCoreDescribesIt) {
    script->searchResult = {Core::TRANSACTION_SUCCESS, DAXCommon::USB, DAXCommon::UPGRADE_KIND_IMPORTANT, 3, {9, 8},
                            std::string("1100"),       {7, 6, 5}};
    const ServiceSearchResult result = makeTransaction()->getSearchResult();
    EXPECT_EQ(result.result, Service::SERVICE_TRANSACTION_SUCCESS);
    ASSERT_TRUE(result.upgrade);
    EXPECT_EQ(result.upgrade->upgradeType, DAXCommon::USB);
    EXPECT_THAT(result.upgrade->upgradeId, ElementsAre(9, 8));
    EXPECT_EQ(result.upgrade->version, std::string("1100"));
    EXPECT_THAT(result.upgrade->updateInfo, ElementsAre(7, 6, 5));
    EXPECT_EQ(result.upgrade->kind, DAXCommon::UPGRADE_KIND_IMPORTANT);
    EXPECT_EQ(result.upgrade->scope, 3);
    EXPECT_THAT(journal(), ElementsAre("core getSearchResult()", FOUND_SUCCESS,
                                       "log INF --- search result for Core contains upgrade to version: 1100"));
}

class UpgradeWithoutAVersion : public TransactionFixture,
                               public ::testing::WithParamInterface<boost::optional<std::string>> {};

TEST_P(UpgradeWithoutAVersion, IsLoggedAsSuchAndShownAsItIs) {
    coreFinds(GetParam());
    const ServiceSearchResult result = makeTransaction()->getSearchResult();
    ASSERT_TRUE(result.upgrade);
    EXPECT_EQ(result.upgrade->version, GetParam());
    EXPECT_THAT(journal(), ElementsAre("core getSearchResult()", FOUND_SUCCESS,
                                       "log INF --- search result for Core contains upgrade without a version."));
}

INSTANTIATE_TEST_SUITE_P(NoneAndTheWordForIt, UpgradeWithoutAVersion,
                         ::testing::Values(boost::none, std::string("WOC_ONLY_VERSION")));

class UpgradeWithAVersion : public TransactionFixture, public ::testing::WithParamInterface<const char*> {};

TEST_P(UpgradeWithAVersion, IsLoggedWithIt) {
    coreFinds(std::string(GetParam()));
    makeTransaction()->getSearchResult();
    EXPECT_EQ(journal().back(),
              std::string("log INF --- search result for Core contains upgrade to version: ") + GetParam());
}

INSTANTIATE_TEST_SUITE_P(AnyOtherText, UpgradeWithAVersion,
                         ::testing::Values("WOC_ONLY_VERSION_2", "WOC_ONLY", "woc_only_version", ""));

TEST_F(CServiceTransactionTest, AsksTheCoreAnewForEachResult) {
    const auto transaction = makeTransaction();
    coreFinds(std::string("1100"));
    EXPECT_TRUE(transaction->getSearchResult().upgrade);
    coreFindsNothing();
    EXPECT_FALSE(transaction->getSearchResult().upgrade);
    EXPECT_THAT(script->calls(), ElementsAre("getSearchResult()", "getSearchResult()"));
}

class UnfinishedSearch : public TransactionFixture,
                         public ::testing::WithParamInterface<std::pair<int, const char*>> {};

TEST_P(UnfinishedSearch, HasNoResultToAskForAndItsStateIsLoggedFirst) {
    const auto& [number, name] = GetParam();
    script->searchResult.result = static_cast<Core::ETransactionResult>(number);
    const auto transaction = makeTransaction();
    const std::string logged = "The result is: " + std::to_string(number) + " \\(" + name + "\\)\\.";
    EXPECT_EXIT(
        {
            FakeKovan::echoLogToStderr(true);
            transaction->getSearchResult();
        },
        ::testing::KilledBySignal(SIGABRT),
        ContainsRegex(logged + ".*ASSERTION FAILED: coreSearchResult.result == Core::TRANSACTION_FAILED \\|\\| "
                               "coreSearchResult.result == Core::TRANSACTION_SUCCESS, "));
}

INSTANTIATE_TEST_SUITE_P(AllOtherStates, UnfinishedSearch,
                         ::testing::Values(std::make_pair(0, "TRANSACTION_UNDEFINED"),
                                           std::make_pair(1, "TRANSACTION_IN_PROGRESS"),
                                           std::make_pair(4, "ETransactionResult=4"),
                                           std::make_pair(-1, "ETransactionResult=-1")));

TEST_F(CServiceTransactionTest, LooksAtTheResultAgainBeforeItInstalls) {
    coreFinds(std::string("1100"));
    makeTransaction()->startInstallation({"b", "a"});
    EXPECT_THAT(journal(), ElementsAre("core getSearchResult()", FOUND_SUCCESS,
                                       "log INF --- search result for Core contains upgrade to version: 1100",
                                       "core startInstallation({a, b})"));
}

TEST_F(CServiceTransactionTest, CancelsWithoutAnUpgradeAndInstallsAllTheSame) {
    coreFindsNothing();
    makeTransaction()->startInstallation({"a"});
    EXPECT_THAT(journal(), ElementsAre("core getSearchResult()", FOUND_FAILED,
                                       "core cancelCoreTransaction(Canceling CoreTransaction because it didn't "
                                       "findind any upgrade.)",
                                       "core startInstallation({a})"));
}

TEST_F(CServiceTransactionTest, AnUpgradeWithAnEmptyIdentifierIsOne) {
    coreFinds(std::string("1100"), 2, {});
    makeTransaction()->startInstallation({});
    EXPECT_THAT(script->calls(), ElementsAre("getSearchResult()", "startInstallation({})"));
}

TEST_F(CServiceTransactionTest, AFailedCancelStopsTheInstallation) {
    coreFindsNothing();
    script->fail("cancelCoreTransaction", CWrongKeys());
    EXPECT_THROW(makeTransaction()->startInstallation({}), CWrongKeys);
    EXPECT_EQ(script->calls().size(), 2U);
}

TEST_F(CServiceTransactionTest, LogsTheReasonOfACancelAndHandsItOn) {
    makeTransaction()->cancelServiceTransaction("told so");
    EXPECT_THAT(journal(), ElementsAre("log INF cancelServiceTransaction() reason: told so",
                                       "core cancelCoreTransaction(cancelServiceTransaction() is canceling "
                                       "CoreTransaction. Reason: told so)"));
}

TEST_F(CServiceTransactionTest, ItsEndReleasesTheCoreTransactionAndCancelsNothing) {
    makeTransaction().reset();
    EXPECT_THAT(journal(), IsEmpty());
    EXPECT_EQ(script->liveTransactions(), 0);
}

class CoreFailure : public TransactionFixture, public ::testing::WithParamInterface<const char*> {
protected:
    static void call(IServiceTransaction& transaction, const std::string& operation) {
        const std::map<std::string, std::function<void()>> operations{
            {"isSearchingPossible", [&] { transaction.isSearchingPossible(); }},
            {"startSearching", [&] { transaction.startSearching(""); }},
            {"startModelsSearching", [&] { transaction.startModelsSearching(); }},
            {"getSearchProgress", [&] { transaction.getSearchProgress(); }},
            {"getSearchResult", [&] { transaction.getSearchResult(); }},
            {"getModelsSearchResult", [&] { transaction.getModelsSearchResult(); }},
            {"startInstallation", [&] { transaction.startInstallation({}); }},
            {"getInstallationProgress", [&] { transaction.getInstallationProgress(); }},
            {"startFinalization", [&] { transaction.startFinalization({}, true); }},
            {"getFinalizationProgress", [&] { transaction.getFinalizationProgress(); }},
            {"cancelCoreTransaction", [&] { transaction.cancelServiceTransaction(""); }}};
        operations.at(operation)();
    }
};

TEST_P(CoreFailure, PassesUnchanged) {
    coreFinds(std::string("1100"));
    const auto transaction = makeTransaction();
    CWrongKeys failure;
    failure << Common::Utils::errinfo_supportcode("E42");
    script->fail(GetParam(), failure);
    EXPECT_EQ((thrownText<Common::Utils::errinfo_supportcode, CWrongKeys>([&] { call(*transaction, GetParam()); })),
              "E42");
}

INSTANTIATE_TEST_SUITE_P(OfEveryOperation, CoreFailure,
                         ::testing::Values("isSearchingPossible", "startSearching", "startModelsSearching",
                                           "getSearchProgress", "getSearchResult", "getModelsSearchResult",
                                           "startInstallation", "getInstallationProgress", "startFinalization",
                                           "getFinalizationProgress", "cancelCoreTransaction"));

} // namespace
} // namespace DAX::Tests
