// What each method reads, calls and writes.
#include <set>

#include <boost/archive/text_iarchive.hpp>
#include <boost/serialization/list.hpp>
#include <boost/serialization/optional.hpp>
#include <boost/serialization/set.hpp>
#include <boost/serialization/vector.hpp>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/TimeSerialization.h"
#include "src/DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/AdapterOverMocks.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using namespace DAXCommon;
using namespace Service;

class MethodTable : public AdapterOverMocks {
protected:
    // A normal reply without an archive.
    static void expectNothing(const Reply& reply) {
        EXPECT_TRUE(reply.normal);
        EXPECT_EQ(reply.archive, "");
    }

    // A normal reply with an archive that holds only its header.
    static void expectHeader(const Reply& reply) {
        EXPECT_TRUE(reply.normal);
        EXPECT_EQ(reply.archive, archiveOf());
    }
};

TEST_F(MethodTable, GetServiceReadsFiveValuesAndWritesTheBusName) {
    EXPECT_CALL(*serviceManager, getService(ServiceClientPriority(5), "updater", ServiceTransactionType(2)))
        .WillOnce(Return(service));
    const Reply reply =
        manager->call("getService", 5, std::string("updater"), 2, std::string("Proxy-1"), std::string(":1.2"));
    EXPECT_TRUE(reply.normal);
    EXPECT_EQ(reply.value<std::string>(), SERVICE_MANAGER_BUS_NAME);
}

TEST_F(MethodTable, GetServiceOwnerReadsNothingAndWritesFourValues) {
    EXPECT_CALL(*serviceManager, getServiceOwner)
        .WillOnce(DoAll(SetArgReferee<0>(ServiceClientPriority(-3)), SetArgReferee<1>("updater"),
                        SetArgReferee<2>(ServiceTransactionType(7)), Return(true)));
    const Reply reply = manager->callWith("getServiceOwner", "");
    EXPECT_TRUE(reply.normal);
    EXPECT_EQ(reply.archive, archiveOf(true, -3, std::string("updater"), 7));
}

TEST_F(MethodTable, GetServiceOwnerWithoutASessionWritesFalse) {
    const Reply reply = manager->callWith("getServiceOwner", "no archive at all");
    EXPECT_EQ(reply.archive, archiveOf(false, 0, std::string(), 0));
}

TEST_F(MethodTable, GetSupportedUpgradeTypesWritesAVectorOfNumbers) {
    EXPECT_CALL(*serviceManager, getSupportedUpgradeTypes).WillOnce(Return(std::vector<UpgradeType>{OTN, USB}));
    const Reply reply = manager->call("getSupportedUpgradeTypes");
    EXPECT_EQ(reply.value<std::vector<UpgradeType>>(), (std::vector<UpgradeType>{OTN, USB}));
}

TEST_F(MethodTable, GetLastSearchingForUpgradeDateWritesAnOptionalDate) {
    const boost::posix_time::ptime date(boost::gregorian::date(2026, 11, 21), boost::posix_time::hours(3));
    EXPECT_CALL(*serviceManager, getLastSearchingForUpgradeDate)
        .WillOnce(Return(boost::optional<boost::posix_time::ptime>(date)));
    const Reply reply = manager->call("getLastSearchingForUpgradeDate");
    EXPECT_EQ(reply.value<boost::optional<boost::posix_time::ptime>>(), date);
}

TEST_F(MethodTable, GetCurrentVersionWritesAString) {
    EXPECT_CALL(*serviceManager, getCurrentVersion).WillOnce(Return("1000"));
    EXPECT_EQ(manager->call("getCurrentVersion").value<std::string>(), "1000");
}

TEST_F(MethodTable, AcquireExternalLockReadsNameAndPriorityAndWritesTheLock) {
    EXPECT_CALL(*serviceManager, acquireExternalLock("installer", ServiceClientPriority(2))).WillOnce(Return(41u));
    EXPECT_EQ(manager->call("acquireExternalLock", std::string("installer"), 2).archive, archiveOf(41u));
}

TEST_F(MethodTable, ReleaseExternalLockReadsNameAndLockAndWritesNothing) {
    EXPECT_CALL(*serviceManager, releaseExternalLock("installer", 41u));
    expectNothing(manager->call("releaseExternalLock", std::string("installer"), 41u));
}

TEST_F(MethodTable, ScheduleFactoryResetWritesNothing) {
    EXPECT_CALL(*serviceManager, scheduleFactoryReset);
    expectNothing(manager->call("scheduleFactoryReset"));
}

TEST_F(MethodTable, HelloMessageReadsAProxyNameAndWritesAHeader) {
    expectHeader(manager->call("helloMessage", std::string("Proxy-1")));
}

TEST_F(MethodTable, GetClientPriorityWritesTheBitsOfTheSignedValue) {
    openSession();
    EXPECT_CALL(*service, getClientPriority).WillOnce(Return(ServiceClientPriority(-2)));
    EXPECT_EQ(session->call("getClientPriority").archive, archiveOf(4294967294u));
}

TEST_F(MethodTable, StartNewTransactionReadsTypeAndProxyAndWritesTheBusName) {
    openSession();
    EXPECT_CALL(*service, startNewTransaction(USB)).WillOnce(Return(transaction));
    const Reply reply = session->call("startNewTransaction", 3, std::string("Proxy-2"), std::string(":1.3"));
    EXPECT_EQ(reply.value<std::string>(), SERVICE_MANAGER_BUS_NAME);
}

TEST_F(MethodTable, InvalidateReadsAReasonAndWritesNothing) {
    openSession();
    EXPECT_CALL(*service, invalidate("enough"));
    expectNothing(session->call("invalidate", std::string("enough")));
}

TEST_F(MethodTable, IsSearchingPossibleWritesAnOptionalFlag) {
    openTransaction();
    EXPECT_CALL(*transaction, isSearchingPossible).WillOnce(Return(boost::optional<bool>(true)));
    EXPECT_EQ(transactions->call("isSearchingPossible").value<boost::optional<bool>>(), boost::optional<bool>(true));
}

TEST_F(MethodTable, StartSearchingReadsAStringAndWritesNothing) {
    openTransaction();
    EXPECT_CALL(*transaction, startSearching("deep"));
    expectNothing(transactions->call("startSearching", std::string("deep")));
}

TEST_F(MethodTable, StartModelsSearchingWritesNothing) {
    openTransaction();
    EXPECT_CALL(*transaction, startModelsSearching);
    expectNothing(transactions->call("startModelsSearching"));
}

TEST_F(MethodTable, TheThreeProgressesWriteARecordEach) {
    openTransaction();
    const auto progress = [](int percent) {
        return ServiceTransactionProgress{SERVICE_TRANSACTION_IN_PROGRESS, percent, 0.5f};
    };
    EXPECT_CALL(*transaction, getSearchProgress).WillOnce(Return(progress(1)));
    EXPECT_CALL(*transaction, getInstallationProgress).WillOnce(Return(progress(2)));
    EXPECT_CALL(*transaction, getFinalizationProgress).WillOnce(Return(progress(3)));
    EXPECT_EQ(transactions->call("getSearchProgress").archive, archiveOf(progress(1)));
    EXPECT_EQ(transactions->call("getInstallationProgress").archive, archiveOf(progress(2)));
    EXPECT_EQ(transactions->call("getFinalizationProgress").archive, archiveOf(progress(3)));
}

TEST_F(MethodTable, GetSearchResultWritesARecord) {
    openTransaction();
    ServiceSearchResult result;
    result.result = SERVICE_TRANSACTION_SUCCESS;
    result.upgrade = SingleUpgradeDescription{OTN, {1, 2}, std::string("1100"), {3}, UPGRADE_KIND_REGULAR, 2};
    EXPECT_CALL(*transaction, getSearchResult).WillOnce(Return(result));
    EXPECT_EQ(transactions->call("getSearchResult").archive, archiveOf(result));
}

TEST_F(MethodTable, GetModelsSearchResultWritesAListOfStrings) {
    openTransaction();
    const std::list<std::string> models{"A", "B"};
    EXPECT_CALL(*transaction, getModelsSearchResult).WillOnce(Return(models));
    EXPECT_EQ(transactions->call("getModelsSearchResult").value<std::list<std::string>>(), models);
}

TEST_F(MethodTable, StartInstallationReadsASetAndWritesNothing) {
    openTransaction();
    const std::set<std::string> items{"main", "panel"};
    EXPECT_CALL(*transaction, startInstallation(items));
    expectNothing(transactions->call("startInstallation", items));
}

TEST_F(MethodTable, StartFinalizationReadsASetAndAFlagAndWritesNothing) {
    openTransaction();
    const std::set<std::string> items{"main"};
    EXPECT_CALL(*transaction, startFinalization(items, true));
    expectNothing(transactions->call("startFinalization", items, true));
}

TEST_F(MethodTable, CancelServiceTransactionReadsAReasonAndWritesNothing) {
    openTransaction();
    EXPECT_CALL(*transaction, cancelServiceTransaction("enough"));
    expectNothing(transactions->call("cancelServiceTransaction", std::string("enough")));
}

// Every method except "getServiceOwner" opens its parameter archive, even if it reads nothing from it.
class WithoutAHeader : public AdapterOverMocks, public WithParamInterface<const char*> {};

TEST_P(WithoutAHeader, IsRefused) {
    openTransaction();
    const std::set<std::string> sessionMethods{"getClientPriority", "startNewTransaction", "invalidate"};
    const std::set<std::string> managerMethods{
        "getService",          "getSupportedUpgradeTypes", "getCurrentVersion",    "getLastSearchingForUpgradeDate",
        "acquireExternalLock", "releaseExternalLock",      "scheduleFactoryReset", "helloMessage"};
    AdapterClient& client = managerMethods.count(GetParam())   ? *manager
                            : sessionMethods.count(GetParam()) ? *session
                                                               : *transactions;
    const Reply reply = client.callWith(GetParam(), "");
    EXPECT_FALSE(reply.normal);
    EXPECT_EQ(reply.exceptionName, "DAXUnknownException");
    EXPECT_THAT(reply.diagnostic(), HasSubstr("archive_exception"));
}

INSTANTIATE_TEST_SUITE_P(Methods, WithoutAHeader,
                         Values("getService", "getSupportedUpgradeTypes", "getLastSearchingForUpgradeDate",
                                "getCurrentVersion", "acquireExternalLock", "releaseExternalLock",
                                "scheduleFactoryReset", "helloMessage", "getClientPriority", "startNewTransaction",
                                "invalidate", "isSearchingPossible", "startSearching", "startModelsSearching",
                                "getSearchProgress", "getSearchResult", "getModelsSearchResult", "startInstallation",
                                "getInstallationProgress", "startFinalization", "getFinalizationProgress",
                                "cancelServiceTransaction"),
                         [](const auto& method) { return std::string(method.param); });

} // namespace
} // namespace DAX::Tests
