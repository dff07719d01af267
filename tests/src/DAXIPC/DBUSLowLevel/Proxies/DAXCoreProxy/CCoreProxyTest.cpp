#include "DAXIPC/DBUSLowLevel/Proxies/DAXCoreProxy/Implementation/CCoreProxy.h"

#include <boost/exception/all.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>
#include <boost/thread.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "CoreInterface/CoreExceptions.h"
#include "DAXCommon/UserInterestExceptions.h"
#include "DAXIPC/DBUSLowLevel/Proxies/DAXCoreProxy/CCoreProxyFactory.h"
#include "support/FakeKovan.h"
#include "support/RecordEquality.h"
#include "support/SampleRecords.h"
#include "support/TestClock.h"
#include "support/Thrown.h"
#include "support/WaitUntil.h"
#include "support/WireOverFakeDBUS.h"

using namespace DAX;
using namespace DAX::Tests;
using namespace DAX::Common::DBUSWrapper::DBUSWrapperExceptions;
using Core::CoreExceptions::ErrorConnectingToCoreException;
using DAXIPC::DBUSLowLevel::CCoreProxyFactory;
using testing::ElementsAre;

using namespace std::chrono_literals;

namespace {

const std::string ATTEMPT_FAILED = "Activation of DAXCore through DBUS Activation failed.";
const std::string CORE_OBJECT = " 1 /org/kovan/tv/dax/core/ccoreTV org.kovan.tv.dax.core.icoreTV ";

std::string tryingAgain(int attempt) {
    return "Activation of DAXCore through DBUS Activation failed (" + std::to_string(attempt) + "/3). Trying again.";
}

class CCoreProxyTest : public testing::Test {
protected:
    std::unique_ptr<Core::ICore> createCore(unsigned int activationTimeoutSeconds = 50) {
        return CCoreProxyFactory(bus.factory(), activationTimeoutSeconds).create();
    }
    std::shared_ptr<Core::ICoreTransaction> createTransaction() {
        return m_core->createTransaction(sampleParameters());
    }
    void grantTransactions() { m_wire.reply("createTransaction", std::string(":1.99")); }

    WireOverFakeDBUS m_wire{"core"};
    FakeDBUS& bus = m_wire.bus;
    std::unique_ptr<Core::ICore> m_core = createCore();
};

// Nobody waits for the pauses between the attempts.
class CCoreProxyRetryTest : public CCoreProxyTest {
protected:
    std::vector<TestClock::Duration> pauses;

private:
    TestClock m_clock{[this](TestClock::Duration pause) { pauses.push_back(pause); }};
};

TEST_F(CCoreProxyTest, IsMadeWithoutAMessageToTheCore) {
    EXPECT_THAT(bus.events(),
                ElementsAre("create Proxy-1" + CORE_OBJECT + "50000 none", "init Proxy-1 org.kovan.tv.dax.core.TV"));
}

TEST_F(CCoreProxyTest, PassesTheActivationTimeOutOnInMilliseconds) {
    bus.forgetEvents();
    createCore(7);
    EXPECT_EQ(bus.events().front(), "create Proxy-2" + CORE_OBJECT + "7000 none");
    bus.forgetEvents();
    createCore(4294968); // 1000 times this overflows
    EXPECT_EQ(bus.events().front(), "create Proxy-3" + CORE_OBJECT + "704 none");
}

// The exception carries its cause nested, and no text.
template <class Cause, class Call>
void expectErrorConnecting(const Call& call) {
    try {
        call();
        FAIL() << "nothing was thrown";
    } catch (const ErrorConnectingToCoreException& caught) {
        EXPECT_EQ(textOf<Common::Utils::errinfo_stream_text>(caught), "<no such text>");
        const auto* const cause = boost::get_error_info<boost::errinfo_nested_exception>(caught);
        ASSERT_NE(cause, nullptr);
        EXPECT_THROW(boost::rethrow_exception(*cause), Cause);
    }
}

TEST_F(CCoreProxyTest, CannotBeMadeWithoutABus) {
    bus.failCreate(ErrorConnectingToDBUS());
    expectErrorConnecting<ErrorConnectingToDBUS>([&] { createCore(); });
}

TEST_F(CCoreProxyTest, CannotBeMadeWhenItsProxyCannotBeInitialized) {
    bus.failInit(RemoteObjectNotAccessible());
    expectErrorConnecting<RemoteObjectNotAccessible>([&] { createCore(); });
}

TEST_F(CCoreProxyTest, PassesOtherExceptionsOfTheConstructionOn) {
    bus.failCreate(std::bad_alloc());
    EXPECT_THROW(createCore(), std::bad_alloc);
}

TEST_F(CCoreProxyTest, AsksForTheSupportedUpgradeTypes) {
    const std::vector<DAXCommon::UpgradeType> types{DAXCommon::OTN, DAXCommon::POSTPONE};
    m_wire.reply("getSupportedUpgradeTypes", types);
    EXPECT_EQ(types, m_core->getSupportedUpgradeTypes());
    m_wire.expectRequest("getSupportedUpgradeTypes");
}

TEST_F(CCoreProxyTest, AsksForTheCurrentVersion) {
    m_wire.reply("getCurrentVersion", std::string("17.037.0"));
    EXPECT_EQ(m_core->getCurrentVersion(), "17.037.0");
    m_wire.expectRequest("getCurrentVersion");
}

TEST_F(CCoreProxyTest, SchedulesAFactoryReset) {
    m_wire.replyNothing("scheduleFactoryReset");
    m_core->scheduleFactoryReset();
    m_wire.expectRequest("scheduleFactoryReset");
}

TEST_F(CCoreProxyTest, GivesDefaultsForRepliesWithoutAResult) {
    bus.reply("getSupportedUpgradeTypes");
    bus.reply("getCurrentVersion");
    bus.reply("createTransaction");
    EXPECT_TRUE(m_core->getSupportedUpgradeTypes().empty());
    EXPECT_EQ(m_core->getCurrentVersion(), "");
    EXPECT_EQ(createTransaction(), nullptr);
}

TEST_F(CCoreProxyTest, ThrowsWhatTheCoreThrows) {
    bus.replyWithException("getCurrentVersion", "CUSBReadError", golden("exceptions/CUSBReadError"));
    EXPECT_THROW(m_core->getCurrentVersion(), UserInterestExceptions::CUSBReadError);
}

TEST_F(CCoreProxyTest, CreatesATransactionOnAConnectionOfItsOwnThatSaysHello) {
    grantTransactions();
    m_wire.replyNothing("helloMessage");
    bus.forgetEvents();
    EXPECT_NE(createTransaction(), nullptr);
    EXPECT_THAT(bus.events(),
                ElementsAre("create Proxy-2" + CORE_OBJECT + "10000 none", "call Proxy-1 createTransaction",
                            "init Proxy-2 :1.99", "call Proxy-2 helloMessage", "drop Proxy-2"));
    m_wire.expectRequest("createTransaction", sampleParameters(), std::string("Proxy-2"), std::string(":1.2"));
    m_wire.expectRequest("helloMessage", std::string("Proxy-2"));
}

TEST_F(CCoreProxyTest, KeepsTheConnectionAsLongAsTheTransaction) {
    grantTransactions();
    bus.reply("helloMessage");
    auto transaction = createTransaction();
    EXPECT_EQ(bus.events().back(), "call Proxy-2 helloMessage");
    transaction.reset();
    EXPECT_EQ(bus.events().back(), "drop Proxy-2");
}

TEST_F(CCoreProxyTest, GivesNoTransactionWhenTheCoreRefuses) {
    bus.reply("createTransaction", encode(std::string()));
    bus.forgetEvents();
    EXPECT_EQ(createTransaction(), nullptr);
    EXPECT_THAT(bus.events(), ElementsAre("create Proxy-2" + CORE_OBJECT + "10000 none",
                                          "call Proxy-1 createTransaction", "drop Proxy-2"));
    EXPECT_TRUE(FakeKovan::messages().empty());
}

TEST_F(CCoreProxyTest, CannotCreateATransactionWithoutABus) {
    bus.failCreate(DBUSMemoryError());
    expectErrorConnecting<DBUSMemoryError>([&] { createTransaction(); });
}

TEST_F(CCoreProxyTest, GoesOnAfterAFailedTransaction) {
    bus.failNext("createTransaction", RemoteObjectNotAccessible());
    EXPECT_THROW(createTransaction(), RemoteObjectNotAccessible);
    EXPECT_EQ(bus.events().back(), "drop Proxy-2");
    grantTransactions();
    bus.reply("helloMessage");
    EXPECT_NE(createTransaction(), nullptr);
}

TEST_F(CCoreProxyTest, DoesNotRetryACreationThatTimedOut) {
    bus.failNext("createTransaction", RemoteObjectActivationTimedOut());
    EXPECT_THROW(createTransaction(), RemoteObjectActivationTimedOut);
    EXPECT_TRUE(FakeKovan::messages().empty());
}

TEST_F(CCoreProxyTest, DoesNotRetryAHelloThatFailsInAnotherWay) {
    grantTransactions();
    bus.fail("helloMessage", RemoteObjectNotAccessible());
    bus.forgetEvents();
    EXPECT_THROW(createTransaction(), RemoteObjectNotAccessible);
    EXPECT_THAT(bus.events(),
                ElementsAre("create Proxy-2" + CORE_OBJECT + "10000 none", "call Proxy-1 createTransaction",
                            "init Proxy-2 :1.99", "call Proxy-2 helloMessage", "drop Proxy-2"));
    EXPECT_TRUE(FakeKovan::messages().empty());
}

TEST_F(CCoreProxyTest, PassesTheExceptionThatAnswersAHelloOn) {
    grantTransactions();
    bus.replyWithException("helloMessage", "CUSBReadError", golden("exceptions/CUSBReadError"));
    EXPECT_THROW(createTransaction(), UserInterestExceptions::CUSBReadError);
}

TEST_F(CCoreProxyRetryTest, RetriesAHelloWhoseActivationTimedOut) {
    grantTransactions();
    bus.failNext("helloMessage", RemoteObjectActivationTimedOut());
    bus.failNext("helloMessage", RemoteObjectActivationTimedOut());
    bus.nextReply("helloMessage");
    EXPECT_NE(createTransaction(), nullptr);
    EXPECT_THAT(pauses, ElementsAre(1s, 1s));
    EXPECT_THAT(FakeKovan::messages("ERR"),
                ElementsAre(ATTEMPT_FAILED, tryingAgain(1), ATTEMPT_FAILED, tryingAgain(2)));
}

TEST_F(CCoreProxyRetryTest, SaysHelloOverTheSameConnectionEachTime) {
    grantTransactions();
    bus.failNext("helloMessage", RemoteObjectActivationTimedOut());
    bus.nextReply("helloMessage");
    bus.forgetEvents();
    createTransaction();
    EXPECT_THAT(bus.events(),
                ElementsAre("create Proxy-2" + CORE_OBJECT + "10000 none", "call Proxy-1 createTransaction",
                            "init Proxy-2 :1.99", "call Proxy-2 helloMessage", "init Proxy-2 :1.99",
                            "call Proxy-2 helloMessage", "drop Proxy-2"));
}

TEST_F(CCoreProxyRetryTest, GivesUpAfterThreeHellosThatTimedOutAndThreeSeconds) {
    grantTransactions();
    bus.fail("helloMessage", RemoteObjectActivationTimedOut());
    EXPECT_EQ((thrownText<Common::Utils::errinfo_stream_text, RemoteObjectNotAccessible>([&] { createTransaction(); })),
              ATTEMPT_FAILED);
    EXPECT_THAT(pauses, ElementsAre(1s, 1s, 1s));
    EXPECT_THAT(FakeKovan::messages("ERR"), ElementsAre(ATTEMPT_FAILED, tryingAgain(1), ATTEMPT_FAILED, tryingAgain(2),
                                                        ATTEMPT_FAILED, tryingAgain(3), ATTEMPT_FAILED));
}

TEST_F(CCoreProxyRetryTest, RetriesWhenTheInitializationTimedOut) {
    grantTransactions();
    bus.failInit(RemoteObjectActivationTimedOut());
    EXPECT_THROW(createTransaction(), RemoteObjectNotAccessible);
}

TEST_F(CCoreProxyTest, CanBeInterruptedWhileItWaits) {
    grantTransactions();
    bus.fail("helloMessage", RemoteObjectActivationTimedOut());
    const TestClock clock; // it stands still, so the first pause does not end by itself
    bool interrupted = false;
    boost::thread caller([&] {
        try {
            createTransaction();
        } catch (const boost::thread_interrupted&) {
            interrupted = true;
        }
    });
    EXPECT_TRUE(clock.isAwaited());
    caller.interrupt();
    caller.join();
    EXPECT_TRUE(interrupted);
    EXPECT_THAT(FakeKovan::messages("ERR"), ElementsAre(ATTEMPT_FAILED, tryingAgain(1)));
}

} // namespace
