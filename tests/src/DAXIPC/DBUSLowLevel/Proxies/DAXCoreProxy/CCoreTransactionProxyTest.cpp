#include "DAXIPC/DBUSLowLevel/Proxies/DAXCoreProxy/Implementation/CCoreTransactionProxy.h"

#include <boost/serialization/list.hpp>
#include <boost/serialization/optional.hpp>
#include <boost/serialization/set.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>
#include <gtest/gtest.h>

#include "DAXCommon/UserInterestExceptions.h"
#include "support/RecordEquality.h"
#include "support/SampleRecords.h"
#include "support/WireOverFakeDBUS.h"

using namespace DAX;
using namespace DAX::Tests;
using Core::TransactionProgress;

namespace {

using Texts = std::set<std::string>;

class CCoreTransactionProxyTest : public testing::Test {
protected:
    WireOverFakeDBUS m_wire{"core"};
    DAXIPC::DBUSLowLevel::CCoreTransactionProxy m_transaction{m_wire.bus.proxy()};
};

TEST_F(CCoreTransactionProxyTest, AsksWhetherASearchIsPossible) {
    m_wire.reply("isSearchingPossible", boost::optional<bool>(true));
    EXPECT_TRUE(m_transaction.isSearchingPossible() == boost::optional<bool>(true));
    m_wire.expectRequest("isSearchingPossible");
}

TEST_F(CCoreTransactionProxyTest, StartsASearch) {
    m_wire.replyNothing("startSearching");
    m_transaction.startSearching("");
    m_wire.expectRequest("startSearching", std::string());
    m_transaction.startSearching("KV 65");
    EXPECT_EQ(m_wire.bus.parameters("startSearching"), "22 serialization::archive 18 5 KV 65");
}

TEST_F(CCoreTransactionProxyTest, StartsASearchForModels) {
    m_wire.replyNothing("startModelsSearching");
    m_transaction.startModelsSearching();
    m_wire.expectRequest("startModelsSearching");
}

TEST_F(CCoreTransactionProxyTest, AsksForTheProgressOfEachStep) {
    const auto searching = sampleProgress<TransactionProgress>(1, 50, 2.5F);
    const auto installing = sampleProgress<TransactionProgress>(2, 100, 0.0F);
    const auto finalizing = sampleProgress<TransactionProgress>(3, 7, boost::none);
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

TEST_F(CCoreTransactionProxyTest, AsksForTheSearchResult) {
    m_wire.reply("getSearchResult", sampleSearchResult());
    EXPECT_TRUE(sampleSearchResult() == m_transaction.getSearchResult());
    m_wire.expectRequest("getSearchResult");
}

TEST_F(CCoreTransactionProxyTest, AsksForTheModels) {
    const std::list<std::string> models{"KV-55", "KV 65"};
    m_wire.reply("getModelsSearchResult", models);
    EXPECT_EQ(models, m_transaction.getModelsSearchResult());
    m_wire.expectRequest("getModelsSearchResult");
}

TEST_F(CCoreTransactionProxyTest, StartsAnInstallation) {
    m_wire.replyNothing("startInstallation");
    m_transaction.startInstallation({"b c", "a"});
    m_wire.expectRequest("startInstallation", Texts{"a", "b c"});
}

TEST_F(CCoreTransactionProxyTest, StartsAFinalization) {
    m_wire.replyNothing("startFinalization");
    m_transaction.startFinalization({"a"}, SAMPLE_UPGRADE_ID, true);
    m_wire.expectRequest("startFinalization", Texts{"a"},
                         boost::optional<std::vector<unsigned char>>(SAMPLE_UPGRADE_ID), true);
}

TEST_F(CCoreTransactionProxyTest, Cancels) {
    m_wire.replyNothing("cancelCoreTransaction");
    m_transaction.cancelCoreTransaction("user's wish");
    m_wire.expectRequest("cancelCoreTransaction", std::string("user's wish"));
}

TEST_F(CCoreTransactionProxyTest, GivesDefaultsForRepliesWithoutAResult) {
    for (const char* const method : {"isSearchingPossible", "getSearchProgress", "getInstallationProgress",
                                     "getFinalizationProgress", "getSearchResult", "getModelsSearchResult"}) {
        m_wire.bus.reply(method);
    }
    EXPECT_TRUE(m_transaction.isSearchingPossible() == boost::none);
    EXPECT_TRUE(TransactionProgress() == m_transaction.getSearchProgress());
    EXPECT_TRUE(TransactionProgress() == m_transaction.getInstallationProgress());
    EXPECT_TRUE(TransactionProgress() == m_transaction.getFinalizationProgress());
    EXPECT_TRUE(Core::SearchResult() == m_transaction.getSearchResult());
    EXPECT_TRUE(m_transaction.getModelsSearchResult().empty());
}

TEST_F(CCoreTransactionProxyTest, ThrowsWhatTheCoreThrows) {
    m_wire.bus.replyWithException("startInstallation", "CUSBReadError", golden("exceptions/CUSBReadError"));
    EXPECT_THROW(m_transaction.startInstallation({}), UserInterestExceptions::CUSBReadError);
}

} // namespace
