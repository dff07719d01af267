#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/CServiceProxy.h"

#include <boost/serialization/string.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "DAXCommon/UserInterestExceptions.h"
#include "support/WireOverFakeDBUS.h"

using namespace DAX;
using namespace DAX::Tests;
using namespace DAX::Common::DBUSWrapper::DBUSWrapperExceptions;
using testing::ElementsAre;

namespace {

const std::string SERVICE_NAME = "org.kovan.tv.dax.service.servicemanager";
const std::string SERVICE_OBJECT =
    " 1 /org/kovan/tv/dax/service/cservicemanager org.kovan.tv.dax.service.iservicemanager none none";

class CServiceProxyTest : public testing::Test {
protected:
    WireOverFakeDBUS m_wire{"service"};
    FakeDBUS& bus = m_wire.bus;
    DAXIPC::DBUSLowLevel::CServiceProxy m_session{bus.factory(), bus.proxy()};
};

TEST_F(CServiceProxyTest, AsksForThePriorityWhichIsSentAsItsBits) {
    m_wire.reply("getClientPriority", 4294967293U);
    EXPECT_EQ(static_cast<int>(m_session.getClientPriority()), -3);
    m_wire.expectRequest("getClientPriority");
}

TEST_F(CServiceProxyTest, StartsATransactionOnAConnectionOfItsOwnThatSaysHello) {
    m_wire.reply("startNewTransaction", SERVICE_NAME);
    m_wire.reply("helloMessage");
    bus.forgetEvents();
    EXPECT_NE(m_session.startNewTransaction(DAXCommon::USB), nullptr);
    EXPECT_THAT(bus.events(), ElementsAre("create Proxy-2" + SERVICE_OBJECT, "call Proxy-1 startNewTransaction",
                                          "init Proxy-2 " + SERVICE_NAME, "call Proxy-2 helloMessage", "drop Proxy-2"));
    m_wire.expectRequest("startNewTransaction", 3, std::string("Proxy-2"), std::string(":1.2"));
    m_wire.expectRequest("helloMessage", std::string("Proxy-2"));
}

TEST_F(CServiceProxyTest, StartsNoTransactionWhenTheServiceRefuses) {
    for (const std::string& refusal : {encode(std::string()), std::string()}) {
        bus.reply("startNewTransaction", refusal);
        EXPECT_EQ(m_session.startNewTransaction(DAXCommon::USB), nullptr);
        EXPECT_THAT(bus.events().back(), testing::StartsWith("drop Proxy-"));
    }
}

TEST_F(CServiceProxyTest, PassesTheFailureOfAHelloOn) {
    m_wire.reply("startNewTransaction", SERVICE_NAME);
    bus.fail("helloMessage", RemoteObjectActivationTimedOut());
    EXPECT_THROW(m_session.startNewTransaction(DAXCommon::USB), RemoteObjectActivationTimedOut);
}

TEST_F(CServiceProxyTest, InvalidatesOnce) {
    m_wire.replyNothing("invalidate");
    m_session.invalidate("no longer needed");
    m_wire.expectRequest("invalidate", std::string("no longer needed"));
    bus.forgetEvents();
    m_session.invalidate("again");
    EXPECT_TRUE(bus.events().empty());
}

TEST_F(CServiceProxyTest, InvalidatesAgainAfterAnInvalidationThatFailed) {
    bus.failNext("invalidate", RemoteObjectNotAccessible());
    EXPECT_THROW(m_session.invalidate("first"), RemoteObjectNotAccessible);
    bus.reply("invalidate");
    m_session.invalidate("second");
    EXPECT_EQ(encode(std::string("second")), bus.parameters("invalidate") + "\n");
}

TEST_F(CServiceProxyTest, ThrowsTheRevocationOfTheSessionAsUnknown) {
    bus.replyWithException("getClientPriority", "DAXUnknownException", golden("exceptions/CUSBReadError"));
    EXPECT_THROW(m_session.getClientPriority(), UserInterestExceptions::DAXUnknownException);
}

} // namespace
