#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/CServiceManagerProxy.h"

#include <boost/date_time/posix_time/posix_time.hpp>
#include <boost/optional/optional_io.hpp>
#include <boost/serialization/optional.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "DAXCommon/UserInterestExceptions.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/TimeSerialization.h"
#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/CServiceManagerProxyFactory.h"
#include "support/WireOverFakeDBUS.h"

using namespace DAX;
using namespace DAX::Tests;
using namespace DAX::Common::DBUSWrapper::DBUSWrapperExceptions;
using DAXCommon::ServiceClientPriority;
using DAXCommon::ServiceTransactionType;
using testing::ElementsAre;

namespace {

const std::string SERVICE_NAME = "org.kovan.tv.dax.service.servicemanager";
const std::string SERVICE_OBJECT =
    " 1 /org/kovan/tv/dax/service/cservicemanager org.kovan.tv.dax.service.iservicemanager none none";

class CServiceManagerProxyTest : public testing::Test {
protected:
    std::unique_ptr<Service::IServiceManager> createManager() {
        return DAXIPC::DBUSLowLevel::CServiceManagerProxyFactory(bus.factory()).create();
    }
    std::shared_ptr<Service::IService> getService() {
        return m_manager->getService(ServiceClientPriority(4), "update app", ServiceTransactionType(2));
    }

    WireOverFakeDBUS m_wire{"service"};
    FakeDBUS& bus = m_wire.bus;
    std::unique_ptr<Service::IServiceManager> m_manager = createManager();
};

TEST_F(CServiceManagerProxyTest, IsMadeWithoutAMessageToTheService) {
    EXPECT_THAT(bus.events(), ElementsAre("create Proxy-1" + SERVICE_OBJECT, "init Proxy-1 " + SERVICE_NAME));
}

TEST_F(CServiceManagerProxyTest, CannotBeMadeWithoutABus) {
    bus.failCreate(ErrorConnectingToDBUS());
    EXPECT_THROW(createManager(), ErrorConnectingToDBUS);
}

TEST_F(CServiceManagerProxyTest, GetsASessionOnAConnectionOfItsOwnThatSaysHello) {
    m_wire.reply("getService", SERVICE_NAME);
    m_wire.reply("helloMessage");
    bus.forgetEvents();
    EXPECT_NE(getService(), nullptr);
    EXPECT_THAT(bus.events(), ElementsAre("create Proxy-2" + SERVICE_OBJECT, "call Proxy-1 getService",
                                          "init Proxy-2 " + SERVICE_NAME, "call Proxy-2 helloMessage", "drop Proxy-2"));
    m_wire.expectRequest("getService", 4, std::string("update app"), 2, std::string("Proxy-2"), std::string(":1.2"));
    m_wire.expectRequest("helloMessage", std::string("Proxy-2"));
}

TEST_F(CServiceManagerProxyTest, GetsNoSessionWhenTheServiceRefuses) {
    bus.reply("getService", encode(std::string()));
    bus.forgetEvents();
    EXPECT_EQ(getService(), nullptr);
    EXPECT_THAT(bus.events(),
                ElementsAre("create Proxy-2" + SERVICE_OBJECT, "call Proxy-1 getService", "drop Proxy-2"));
}

TEST_F(CServiceManagerProxyTest, GetsNoSessionFromAReplyWithoutAResult) {
    bus.reply("getService");
    EXPECT_EQ(getService(), nullptr);
}

TEST_F(CServiceManagerProxyTest, PassesTheFailureOfAHelloOnAndDropsTheConnection) {
    m_wire.reply("getService", SERVICE_NAME);
    bus.fail("helloMessage", RemoteObjectNotAccessible());
    EXPECT_THROW(getService(), RemoteObjectNotAccessible);
    EXPECT_EQ(bus.events().back(), "drop Proxy-2");
}

TEST_F(CServiceManagerProxyTest, CannotGetASessionWithoutABus) {
    bus.failCreate(ErrorConnectingToDBUS());
    EXPECT_THROW(getService(), ErrorConnectingToDBUS);
}

TEST_F(CServiceManagerProxyTest, AsksForTheOwnerWithoutABody) {
    m_wire.reply("getServiceOwner", true, -3, std::string("update app"), 2);
    auto priority = ServiceClientPriority(0);
    std::string name;
    auto type = ServiceTransactionType(0);
    EXPECT_TRUE(m_manager->getServiceOwner(priority, name, type));
    EXPECT_EQ(static_cast<int>(priority), -3);
    EXPECT_EQ(name, "update app");
    EXPECT_EQ(static_cast<int>(type), 2);
    EXPECT_EQ(bus.parameters("getServiceOwner"), golden("service/getServiceOwner.request"));
    EXPECT_EQ(bus.parameters("getServiceOwner"), "");
}

TEST_F(CServiceManagerProxyTest, LeavesTheArgumentsUntouchedWhenThereIsNoOwner) {
    auto priority = ServiceClientPriority(9);
    std::string name = "unchanged";
    auto type = ServiceTransactionType(8);
    for (const std::string& reply : {encode(false, 1, std::string("x"), 1), std::string()}) {
        bus.reply("getServiceOwner", reply);
        EXPECT_FALSE(m_manager->getServiceOwner(priority, name, type));
        EXPECT_EQ(static_cast<int>(priority), 9);
        EXPECT_EQ(name, "unchanged");
        EXPECT_EQ(static_cast<int>(type), 8);
    }
}

TEST_F(CServiceManagerProxyTest, ThrowsWhatTheServiceThrowsWhenAskedForTheOwner) {
    bus.replyWithException("getServiceOwner", "CUSBReadError", golden("exceptions/CUSBReadError"));
    auto priority = ServiceClientPriority(0);
    std::string name;
    auto type = ServiceTransactionType(0);
    EXPECT_THROW(m_manager->getServiceOwner(priority, name, type), UserInterestExceptions::CUSBReadError);
}

TEST_F(CServiceManagerProxyTest, AsksForTheSupportedUpgradeTypes) {
    const std::vector<DAXCommon::UpgradeType> types{DAXCommon::OTA, DAXCommon::OTN, DAXCommon::USB};
    m_wire.reply("getSupportedUpgradeTypes", types);
    EXPECT_EQ(types, m_manager->getSupportedUpgradeTypes());
    m_wire.expectRequest("getSupportedUpgradeTypes");
}

TEST_F(CServiceManagerProxyTest, AsksForTheDateOfTheLastSearch) {
    using boost::posix_time::ptime;
    const boost::optional<ptime> date(boost::posix_time::time_from_string("2024-02-29 23:59:58"));
    m_wire.reply("getLastSearchingForUpgradeDate", date);
    EXPECT_TRUE(date == m_manager->getLastSearchingForUpgradeDate());
    m_wire.expectRequest("getLastSearchingForUpgradeDate");
    bus.reply("getLastSearchingForUpgradeDate", encode(boost::optional<ptime>()));
    EXPECT_TRUE(boost::none == m_manager->getLastSearchingForUpgradeDate());
}

TEST_F(CServiceManagerProxyTest, AsksForTheCurrentVersion) {
    m_wire.reply("getCurrentVersion", std::string("17.037.0"));
    EXPECT_EQ(m_manager->getCurrentVersion(), "17.037.0");
    m_wire.expectRequest("getCurrentVersion");
}

TEST_F(CServiceManagerProxyTest, AcquiresAnExternalLock) {
    m_wire.reply("acquireExternalLock", 1U);
    EXPECT_EQ(m_manager->acquireExternalLock("nine char", ServiceClientPriority(2)), 1U);
    m_wire.expectRequest("acquireExternalLock", std::string("nine char"), 2);
}

TEST_F(CServiceManagerProxyTest, ThrowsTheRefusalOfALock) {
    bus.replyWithException("acquireExternalLock", "ExternalLockDenied", golden("exceptions/CUSBReadError"));
    EXPECT_THROW(m_manager->acquireExternalLock("nine char", ServiceClientPriority(2)),
                 UserInterestExceptions::ExternalLockDenied);
}

TEST_F(CServiceManagerProxyTest, ReleasesAnExternalLock) {
    m_wire.replyNothing("releaseExternalLock");
    m_manager->releaseExternalLock("nine char", 4294967295U);
    m_wire.expectRequest("releaseExternalLock", std::string("nine char"), 4294967295U);
}

TEST_F(CServiceManagerProxyTest, SchedulesAFactoryReset) {
    m_wire.replyNothing("scheduleFactoryReset");
    m_manager->scheduleFactoryReset();
    m_wire.expectRequest("scheduleFactoryReset");
}

TEST_F(CServiceManagerProxyTest, StaysUsableAfterAFailure) {
    bus.failNext("getCurrentVersion", RemoteObjectNotAccessible());
    EXPECT_THROW(m_manager->getCurrentVersion(), RemoteObjectNotAccessible);
    m_wire.reply("getCurrentVersion", std::string("17.037.0"));
    EXPECT_EQ(m_manager->getCurrentVersion(), "17.037.0");
}

} // namespace
