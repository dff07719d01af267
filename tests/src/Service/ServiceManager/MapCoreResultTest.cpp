#include "Service/ServiceManager/Implementation/mapCoreResult.h"

#include <gtest/gtest.h>

namespace DAX::Tests {
namespace {

using Service::ServiceManager::mapCoreResult;

TEST(MapCoreResult, GivesEachCoreValueTheServiceValueOfTheSameNumber) {
    EXPECT_EQ(mapCoreResult[Core::TRANSACTION_UNDEFINED], Service::SERVICE_TRANSACTION_UNDEFINED);
    EXPECT_EQ(mapCoreResult[Core::TRANSACTION_IN_PROGRESS], Service::SERVICE_TRANSACTION_IN_PROGRESS);
    EXPECT_EQ(mapCoreResult[Core::TRANSACTION_SUCCESS], Service::SERVICE_TRANSACTION_SUCCESS);
    EXPECT_EQ(mapCoreResult[Core::TRANSACTION_FAILED], Service::SERVICE_TRANSACTION_FAILED);
}

TEST(MapCoreResult, TakesInAnyOtherValueAsUndefined) {
    const auto unknown = static_cast<Core::ETransactionResult>(4711);
    EXPECT_EQ(mapCoreResult.count(unknown), 0U);
    EXPECT_EQ(mapCoreResult[unknown], Service::SERVICE_TRANSACTION_UNDEFINED);
    EXPECT_EQ(mapCoreResult.count(unknown), 1U);
    mapCoreResult.erase(unknown);
}

} // namespace
} // namespace DAX::Tests
