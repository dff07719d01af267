#include "Service/ServiceManager/CServiceTransactionStub.h"

#include <gtest/gtest.h>

#include "Debug/DebugAndTestParameters/DAXParameters.h"
#include "support/Thrown.h"

namespace DAX {
namespace Tests {
namespace {

using Service::ServiceManager::CServiceTransactionStub;

TEST(CServiceTransactionStub, SaysThatAScenarioCannotBePlayed) {
    EXPECT_EQ(thrownDescription([] { CServiceTransactionStub::load("/tmp/scenario.xml"); }),
              "Transaction scenarios cannot be played.");
}

TEST(DAXParameters, NoScenarioTakesThePlaceOfTransactionsInNormalOperation) {
    EXPECT_EQ(DAXCommon::getDAXParameters().getServiceTransactionStubScenarioPath(), "");
}

} // namespace
} // namespace Tests
} // namespace DAX
