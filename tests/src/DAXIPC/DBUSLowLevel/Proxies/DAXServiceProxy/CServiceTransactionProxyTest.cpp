#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/CServiceTransactionProxy.h"

#include <boost/serialization/list.hpp>
#include <boost/serialization/optional.hpp>
#include <boost/serialization/set.hpp>
#include <boost/serialization/string.hpp>
#include <gtest/gtest.h>

#include "DAXCommon/UserInterestExceptions.h"
#include "support/RecordEquality.h"
#include "support/SampleRecords.h"
#include "support/WireOverFakeDBUS.h"

using namespace DAX;
using namespace DAX::Tests;
using Service::ServiceTransactionProgress;

namespace {

using Texts = std::set<std::string>;

class CServiceTransactionProxyTest : public testing::Test {
protected:
    WireOverFakeDBUS m_wire{"service"};
    DAXIPC::DBUSLowLevel::CServiceTransactionProxy m_transaction{m_wire.bus.proxy()};
};

TEST_F(CServiceTransactionProxyTest, AsksWhetherASearchIsPossible) {
    m_wire.reply("isSearchingPossible", boost::optional<bool>(true));
    EXPECT_TRUE(m_transaction.isSearchingPossible() == boost::optional<bool>(true));
    m_wire.expectRequest("isSearchingPossible");
}

TEST_F(CServiceTransactionProxyTest, StartsASearch) {
    m_wire.replyNothing("startSearching");
    m_transaction.startSearching("");
    m_wire.expectRequest("startSearching", std::string());
}

TEST_F(CServiceTransactionProxyTest, StartsASearchForModels) {
    m_wire.replyNothing("startModelsSearching");
    m_transaction.startModelsSearching();
    m_wire.expectRequest("startModelsSearching");
}

TEST_F(CServiceTransactionProxyTest, AsksForTheProgressOfEachStep) {
    const auto searching = sampleProgress<ServiceTransactionProgress>(1, 50, 2.5F);
    const auto installing = sampleProgress<ServiceTransactionProgress>(2, 100, 0.0F);
    const auto finalizing = sampleProgress<ServiceTransactionProgress>(3, 7, boost::none);
    m_wire.reply("getSearchProgress", searching);
    m_wire.reply("getInstallationProgress", installing);
    m_wire.reply("getFinalizationProgress", finalizing);
    EXPECT_TRUE(searching == m_transaction.getSearchProgress());
    EXPECT_TRUE(installing == m_transaction.getInstallationProgress());
    EXPECT_TRUE(finalizing == m_transaction.getFinalizationProgress());
    m_wire.expectRequest("getSearchProgress");
    m_wire.expectRequest("getInstallationProgress");
    m_wire.expectRequest("getFinalizationProgress");
}

TEST_F(CServiceTransactionProxyTest, AsksForTheSearchResult) {
    m_wire.reply("getSearchResult", sampleServiceSearchResult());
    EXPECT_TRUE(sampleServiceSearchResult() == m_transaction.getSearchResult());
    m_wire.expectRequest("getSearchResult");
}

TEST_F(CServiceTransactionProxyTest, AsksForTheModels) {
    const std::list<std::string> models{"KV-55", "KV 65"};
    m_wire.reply("getModelsSearchResult", models);
    EXPECT_EQ(models, m_transaction.getModelsSearchResult());
    m_wire.expectRequest("getModelsSearchResult");
}

TEST_F(CServiceTransactionProxyTest, StartsAnInstallation) {
    m_wire.replyNothing("startInstallation");
    m_transaction.startInstallation({"b c", "a"});
    m_wire.expectRequest("startInstallation", Texts{"a", "b c"});
}

TEST_F(CServiceTransactionProxyTest, StartsAFinalization) {
    m_wire.replyNothing("startFinalization");
    m_transaction.startFinalization({"a"}, true);
    m_wire.expectRequest("startFinalization", Texts{"a"}, true);
}

TEST_F(CServiceTransactionProxyTest, Cancels) {
    m_wire.replyNothing("cancelServiceTransaction");
    m_transaction.cancelServiceTransaction("user's wish");
    m_wire.expectRequest("cancelServiceTransaction", std::string("user's wish"));
}

TEST_F(CServiceTransactionProxyTest, GivesDefaultsForRepliesWithoutAResult) {
    for (const char* const method : {"isSearchingPossible", "getSearchProgress", "getSearchResult"}) {
        m_wire.bus.reply(method);
    }
    EXPECT_TRUE(m_transaction.isSearchingPossible() == boost::none);
    EXPECT_TRUE(ServiceTransactionProgress() == m_transaction.getSearchProgress());
    EXPECT_TRUE(Service::ServiceSearchResult() == m_transaction.getSearchResult());
}

TEST_F(CServiceTransactionProxyTest, ThrowsTheEndOfTheTransaction) {
    m_wire.bus.replyWithException("startSearching", "TransactionInvalidatedException",
                                  golden("exceptions/CUSBReadError"));
    EXPECT_THROW(m_transaction.startSearching(""), UserInterestExceptions::TransactionInvalidatedException);
}

} // namespace
