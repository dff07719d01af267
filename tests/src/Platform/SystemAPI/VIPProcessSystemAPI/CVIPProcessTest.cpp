#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/SystemAPI/VIPProcessSystemAPI/VIPProcessSystemAPI.h"
#include "support/FakeKovan.h"

namespace DAX::Tests {
namespace {

using ::testing::ElementsAre;

TEST(VIPProcess, IsLoggedAndThenRegistered) {
    Platform::VIPProcessSystemAPI::registerVIPProcess();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Registering VIP process.", "vip"));
}

TEST(VIPProcess, IgnoresARefusal) {
    FakeKovan::setVipResult(-1);
    EXPECT_NO_THROW(Platform::VIPProcessSystemAPI::registerVIPProcess());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Registering VIP process.", "vip"));
}

} // namespace
} // namespace DAX::Tests
