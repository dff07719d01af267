// Who may use the session and the transaction, and how they end.
#include <boost/exception/enable_current_exception.hpp>
#include <boost/exception/get_error_info.hpp>
#include <boost/thread/thread.hpp>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "DAXCommon/UserInterestExceptions.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"
#include "src/DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/AdapterOverMocks.h"
#include "support/FakeKovan.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using namespace DAXCommon;
using Common::Utils::GenericException;
using Service::IServiceTransaction;
using UserInterestExceptions::CUpdateFailed;

// Throws like every throw site of the system: whoever captures the exception keeps its type.
auto updateFailed() {
    return boost::enable_current_exception(CUpdateFailed());
}

class CServiceManagerAdapterTest : public AdapterOverMocks {
protected:
    // Expects a refusal: a log line at level ERR, and an exception of this name with the same text in its diagnostic.
    static void expectRefusal(const Reply& reply, const char* wireName, const std::string& text) {
        EXPECT_FALSE(reply.normal);
        EXPECT_EQ(reply.exceptionName, wireName);
        EXPECT_THAT(reply.diagnostic(), HasSubstr(text));
        EXPECT_THAT(FakeKovan::messages("ERR"), Contains(text));
    }

    static void expectServiceRevoked(const Reply& reply, const std::string& text) {
        expectRefusal(reply, "DAXUnknownException", text);
        EXPECT_THAT(reply.diagnostic(), HasSubstr("ServiceRevokedException"));
    }

    static void expectTransactionInvalidated(const Reply& reply, const std::string& text) {
        expectRefusal(reply, "TransactionInvalidatedException", text);
    }
};

TEST_F(CServiceManagerAdapterTest, MakesTheServiceManagerWhenItIsMade) {
    class Failing : public Service::IServiceManager::IServiceManagerFactory {
        std::unique_ptr<Service::IServiceManager> create() override { throw std::runtime_error("no core"); }
    };
    EXPECT_THROW(DAXIPC::DBUSLowLevel::CServiceManagerAdapter(std::make_shared<Failing>()), std::runtime_error);
}

TEST_F(CServiceManagerAdapterTest, AnswersAnUnknownMethodByAnException) {
    for (const std::string method : {"noSuchMethod", "stopTransaction", "GetAll", "Introspect", ""}) {
        const Reply reply = manager->call(method);
        EXPECT_FALSE(reply.normal) << method;
        EXPECT_EQ(reply.exceptionName, "DAXUnknownException") << method;
        EXPECT_THAT(reply.diagnostic(), HasSubstr("Unknown method: " + method));
        EXPECT_THAT(reply.diagnostic(), HasSubstr("UnknownMethodException"));
    }
}

TEST_F(CServiceManagerAdapterTest, AnExceptionReplacesWhatWasWrittenBefore) {
    EXPECT_CALL(*serviceManager, getCurrentVersion).WillOnce(Throw(updateFailed()));
    const Reply reply = manager->call("getCurrentVersion");
    EXPECT_FALSE(reply.normal);
    EXPECT_EQ(reply.exceptionName, "CUpdateFailed");
    std::string supportCode = "?", diagnostic;
    reply.read(supportCode, diagnostic);
    EXPECT_EQ(supportCode, "");
}

TEST_F(CServiceManagerAdapterTest, KeepsTheSupportCodeOfAnException) {
    EXPECT_CALL(*serviceManager, scheduleFactoryReset).WillOnce([] {
        DAX_THROW(CUpdateFailed(), "broken" << Common::Utils::errinfo_supportcode("E-7"));
    });
    std::string supportCode;
    manager->call("scheduleFactoryReset").read(supportCode);
    EXPECT_EQ(supportCode, "E-7");
}

TEST_F(CServiceManagerAdapterTest, AnExceptionOfAnyKindIsAnswered) {
    EXPECT_CALL(*serviceManager, scheduleFactoryReset).WillOnce([] { throw 7; });
    EXPECT_EQ(manager->call("scheduleFactoryReset").exceptionName, "DAXUnknownException");
}

TEST_F(CServiceManagerAdapterTest, AGrantedSessionIsLoggedAndItsCreatorIsWatched) {
    EXPECT_CALL(subscriber, subscribeForConnectionCloseEvent(":1.1"));
    getService();
    EXPECT_THAT(FakeKovan::messages("INF"), Contains("New Service for Proxy-1 created."));
}

TEST_F(CServiceManagerAdapterTest, AGrantedSessionIsStoredBeforeItsCreatorIsWatched) {
    EXPECT_CALL(subscriber, subscribeForConnectionCloseEvent).WillOnce([](const std::string&) {
        EXPECT_THAT(FakeKovan::messages("INF"), Contains("New Service for Proxy-1 created."));
        throw updateFailed();
    });
    EXPECT_EQ(getService().exceptionName, "CUpdateFailed");
    session->call("helloMessage", std::string("Proxy-1"));
    EXPECT_TRUE(session->call("getClientPriority").normal);
}

TEST_F(CServiceManagerAdapterTest, ARefusedRequestGivesAnEmptyNameAndChangesNothing) {
    openSession();
    EXPECT_CALL(subscriber, subscribeForConnectionCloseEvent).Times(0);
    ON_CALL(*serviceManager, getService).WillByDefault(Return(nullptr));
    const Reply reply =
        stranger->call("getService", 1, std::string("other"), 0, std::string("Proxy-7"), std::string(":1.9"));
    EXPECT_EQ(reply.value<std::string>(), "");
    EXPECT_TRUE(session->call("getClientPriority").normal);
}

TEST_F(CServiceManagerAdapterTest, RefusesEverySessionCallWithoutASession) {
    for (const char* method : {"getClientPriority", "startNewTransaction", "invalidate"}) {
        FakeKovan::forgetRecords();
        expectServiceRevoked(session->call(method),
                             "m_service was already destroyed or was never created. Sender: :1.2");
    }
}

TEST_F(CServiceManagerAdapterTest, RefusesASessionCallBeforeTheHello) {
    getService();
    expectServiceRevoked(session->call("getClientPriority"),
                         "Accessing m_service that was created by a different sender. Proxy name: Proxy-1. Original "
                         "sender: <not-set>. Current sender: :1.2");
}

TEST_F(CServiceManagerAdapterTest, RefusesEverySessionCallOfAWrongSender) {
    openSession();
    for (const char* method : {"getClientPriority", "startNewTransaction", "invalidate"}) {
        FakeKovan::forgetRecords();
        expectServiceRevoked(stranger->call(method),
                             "Accessing m_service that was created by a different sender. Proxy name: Proxy-1. "
                             "Original sender: :1.2. Current sender: :1.9");
    }
}

class EveryTransactionMethod : public CServiceManagerAdapterTest, public WithParamInterface<const char*> {};

TEST_P(EveryTransactionMethod, IsRefusedWithoutATransaction) {
    openSession();
    expectTransactionInvalidated(session->call(GetParam()),
                                 "m_serviceTransaction is already canceled or was never created. Sender: :1.2");
}

TEST_P(EveryTransactionMethod, IsRefusedToAWrongSender) {
    openTransaction();
    expectTransactionInvalidated(stranger->call(GetParam()),
                                 "Accessing m_serviceTransaction that was created by a different sender. Proxy name: "
                                 "Proxy-2. Original sender: :1.3. Current sender: :1.9");
}

TEST_P(EveryTransactionMethod, IsRefusedBeforeTheHello) {
    openSession();
    startTransaction();
    expectTransactionInvalidated(transactions->call(GetParam()),
                                 "Accessing m_serviceTransaction that was created by a different sender. Proxy name: "
                                 "Proxy-2. Original sender: <not-set>. Current sender: :1.3");
}

TEST_P(EveryTransactionMethod, IsRefusedWhenTheSessionHasDroppedTheTransaction) {
    openTransaction();
    transaction.reset();
    expectTransactionInvalidated(transactions->call(GetParam()),
                                 "m_serviceTransaction is already destroyed on the CService side. Proxy name: "
                                 "Proxy-2. Original sender: :1.3. Current sender: :1.3");
}

INSTANTIATE_TEST_SUITE_P(Methods, EveryTransactionMethod,
                         Values("isSearchingPossible", "startSearching", "startModelsSearching", "getSearchProgress",
                                "getSearchResult", "getModelsSearchResult", "startInstallation",
                                "getInstallationProgress", "startFinalization", "getFinalizationProgress",
                                "cancelServiceTransaction"),
                         [](const auto& method) { return std::string(method.param); });

TEST_F(CServiceManagerAdapterTest, TheHelloBindsTheSessionToItsSender) {
    getService();
    session->call("helloMessage", std::string("Proxy-1"));
    EXPECT_THAT(FakeKovan::messages("INF"), Contains("Hello message for Service received: Proxy-1, :1.2"));
    EXPECT_TRUE(session->call("getClientPriority").normal);
}

TEST_F(CServiceManagerAdapterTest, TheHelloBindsTheTransactionToItsSender) {
    openTransaction();
    EXPECT_THAT(FakeKovan::messages("INF"), Contains("Hello message for ServiceTransaction received: Proxy-2, :1.3"));
    EXPECT_TRUE(transactions->call("getSearchProgress").normal);
}

TEST_F(CServiceManagerAdapterTest, ASecondHelloReplacesTheFirst) {
    openSession();
    stranger->call("helloMessage", std::string("Proxy-1"));
    EXPECT_TRUE(stranger->call("getClientPriority").normal);
    EXPECT_FALSE(session->call("getClientPriority").normal);
}

TEST_F(CServiceManagerAdapterTest, AHelloOfAnUnknownProxyIsLoggedAndSucceeds) {
    EXPECT_TRUE(stranger->call("helloMessage", std::string("Proxy-9")).normal);
    EXPECT_THAT(FakeKovan::messages("WRN"),
                Contains("Neither Service nor ServiceTransaction created by proxy 'Proxy-9' exist. "
                         "Ignoring 'hello' message from sender: :1.9"));
}

TEST_F(CServiceManagerAdapterTest, AHelloChecksTheSessionBeforeTheTransaction) {
    openSession();
    ON_CALL(*service, startNewTransaction).WillByDefault([this](UpgradeType) { return transaction; });
    session->call("startNewTransaction", 2, std::string("Proxy-1"), std::string(":1.3"));
    transactions->call("helloMessage", std::string("Proxy-1"));
    EXPECT_FALSE(transactions->call("getSearchProgress").normal);
    EXPECT_TRUE(transactions->call("getClientPriority").normal);
}

TEST_F(CServiceManagerAdapterTest, StartingATransactionIsLoggedWithProxyAndConnection) {
    openSession();
    startTransaction();
    EXPECT_THAT(FakeKovan::messages("INF"), Contains("Starting new service transaction for proxy: Proxy-2, :1.3"));
}

TEST_F(CServiceManagerAdapterTest, ATransactionThatCannotBeStartedIsLoggedAndLeavesTheEarlierOne) {
    openTransaction();
    FakeKovan::forgetRecords();
    ON_CALL(*service, startNewTransaction).WillByDefault([](UpgradeType) -> std::shared_ptr<IServiceTransaction> {
        throw updateFailed();
    });
    const Reply reply = session->call("startNewTransaction", 2, std::string("Proxy-3"), std::string(":1.4"));
    EXPECT_EQ(reply.exceptionName, "CUpdateFailed");
    EXPECT_THAT(FakeKovan::messages("INF"), ElementsAre("Starting new service transaction for proxy: Proxy-3, :1.4"));
    EXPECT_TRUE(transactions->call("getSearchProgress").normal);
}

TEST_F(CServiceManagerAdapterTest, AnInvalidSessionStillAnswersWithTheBusNameAndGivesAnExpiredTransaction) {
    openSession();
    transaction.reset();
    EXPECT_EQ(startTransaction().value<std::string>(), SERVICE_MANAGER_BUS_NAME);
    transactions->call("helloMessage", std::string("Proxy-2"));
    expectTransactionInvalidated(transactions->call("getSearchProgress"),
                                 "m_serviceTransaction is already destroyed on the CService side. Proxy name: "
                                 "Proxy-2. Original sender: :1.3. Current sender: :1.3");
}

TEST_F(CServiceManagerAdapterTest, InvalidatingUnsubscribesAndEndsTheSession) {
    openSession();
    InSequence order;
    EXPECT_CALL(*service, invalidate("enough"));
    EXPECT_CALL(subscriber, unsubscribeFromConnectionCloseEvent);
    EXPECT_CALL(*service, invalidate("Invalidating Service in CServiceManagerAdapter destructor"));
    session->call("invalidate", std::string("enough"));
    expectServiceRevoked(session->call("getClientPriority"),
                         "m_service was already destroyed or was never created. Sender: :1.2");
    EXPECT_TRUE(getService().normal);
}

TEST_F(CServiceManagerAdapterTest, AFailedInvalidationKeepsTheSessionAndItsSubscription) {
    openSession();
    EXPECT_CALL(*service, invalidate).WillOnce(Throw(updateFailed())).WillRepeatedly(Return());
    EXPECT_CALL(subscriber, unsubscribeFromConnectionCloseEvent).Times(0);
    EXPECT_EQ(session->call("invalidate", std::string("enough")).exceptionName, "CUpdateFailed");
    EXPECT_TRUE(session->call("getClientPriority").normal);
}

TEST_F(CServiceManagerAdapterTest, InvalidatingLeavesTheTransactionToGoStale) {
    openTransaction();
    session->call("invalidate", std::string("enough"));
    EXPECT_TRUE(transactions->call("getSearchProgress").normal);
    transaction.reset();
    EXPECT_FALSE(transactions->call("getSearchProgress").normal);
}

TEST_F(CServiceManagerAdapterTest, CancellingEndsTheTransaction) {
    openTransaction();
    transactions->call("cancelServiceTransaction", std::string("enough"));
    expectTransactionInvalidated(transactions->call("getSearchProgress"),
                                 "m_serviceTransaction is already canceled or was never created. Sender: :1.3");
}

TEST_F(CServiceManagerAdapterTest, AFailedCancelCanBeRepeated) {
    openTransaction();
    EXPECT_CALL(*transaction, cancelServiceTransaction("enough")).WillOnce(Throw(updateFailed())).WillOnce(Return());
    EXPECT_EQ(transactions->call("cancelServiceTransaction", std::string("enough")).exceptionName, "CUpdateFailed");
    EXPECT_TRUE(transactions->call("cancelServiceTransaction", std::string("enough")).normal);
}

TEST_F(CServiceManagerAdapterTest, ADisconnectionWithoutASessionIsLogged) {
    adapter->clientDisconnected(":1.1");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Client disconnected: :1.1. No Service is active."));
}

TEST_F(CServiceManagerAdapterTest, TheDisconnectionOfTheCreatorInvalidatesTheSession) {
    openSession();
    FakeKovan::forgetRecords();
    EXPECT_CALL(*service, invalidate).WillOnce([](const std::string& reason) {
        FakeKovan::note("invalidate: " + reason);
    });
    adapter->clientDisconnected(":1.1");
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF Client disconnected. Invalidating Service created by this ServiceManager client: "
                            ":1.1. Current Service client: proxy name=Proxy-1 original sender=:1.2",
                            "invalidate: Invalidating Service, because ServiceManager client disconnected: :1.1. "
                            "Current Service client: :1.2. Proxy name: Proxy-1",
                            "log INF Resetting service."));
    EXPECT_FALSE(session->call("getClientPriority").normal);
}

TEST_F(CServiceManagerAdapterTest, TheDisconnectionOfTheCreatorLeavesTheTransactionToGoStale) {
    openTransaction();
    adapter->clientDisconnected(":1.1");
    EXPECT_TRUE(transactions->call("getSearchProgress").normal);
    transaction.reset();
    EXPECT_FALSE(transactions->call("getSearchProgress").normal);
}

TEST_F(CServiceManagerAdapterTest, AFailedInvalidationAtADisconnectionIsLoggedAndTheSessionGoes) {
    openSession();
    EXPECT_CALL(*service, invalidate).WillOnce(Throw(updateFailed())).WillRepeatedly(Return());
    adapter->clientDisconnected(":1.1");
    EXPECT_THAT(FakeKovan::messages("FTL"), Contains(AllOf(StartsWith("Exception caught during invalidating Service: "),
                                                           HasSubstr("CUpdateFailed"))));
    EXPECT_THAT(FakeKovan::messages("INF"), Contains("Resetting service."));
    EXPECT_FALSE(session->call("getClientPriority").normal);
}

TEST_F(CServiceManagerAdapterTest, TheDisconnectionOfAnotherClientThrowsAndTheSessionStays) {
    openSession();
    EXPECT_CALL(*service, invalidate(Not("Invalidating Service in CServiceManagerAdapter destructor"))).Times(0);
    EXPECT_CALL(*service, invalidate("Invalidating Service in CServiceManagerAdapter destructor"));
    try {
        adapter->clientDisconnected(":1.9");
        ADD_FAILURE() << "nothing was thrown";
    } catch (const GenericException& exception) {
        EXPECT_EQ(*boost::get_error_info<Common::Utils::errinfo_stream_text>(exception),
                  "Service belongs to other client. Disconnected client: :1.9. Service was created by ServiceManager "
                  "client: :1.1. Current Service client: proxy name=Proxy-1 original sender=:1.2");
    }
    EXPECT_THAT(FakeKovan::messages("ERR"),
                Contains("Client disconnected: :1.9. Service will not be invalidated, as it was created by "
                         "ServiceManager client: :1.1. Current Service client: proxy name=Proxy-1 original "
                         "sender=:1.2"));
    EXPECT_TRUE(session->call("getClientPriority").normal);
}

TEST_F(CServiceManagerAdapterTest, ASecondGrantedSessionReplacesTheFirstAndIsTheOneThatIsWatched) {
    openSession();
    EXPECT_CALL(subscriber, subscribeForConnectionCloseEvent(":1.9"));
    stranger->call("getService", 9, std::string("other"), 0, std::string("Proxy-7"), std::string(":1.10"));
    expectServiceRevoked(session->call("getClientPriority"),
                         "Accessing m_service that was created by a different sender. Proxy name: Proxy-7. Original "
                         "sender: <not-set>. Current sender: :1.2");
    EXPECT_THROW(adapter->clientDisconnected(":1.1"), GenericException);
}

TEST_F(CServiceManagerAdapterTest, ItsEndInvalidatesTheSession) {
    openSession();
    EXPECT_CALL(*service, invalidate("Invalidating Service in CServiceManagerAdapter destructor"));
    adapter.reset();
}

TEST_F(CServiceManagerAdapterTest, ItsEndInvalidatesWithoutInterruption) {
    openSession();
    EXPECT_CALL(*service, invalidate).WillOnce([](const std::string&) {
        EXPECT_FALSE(boost::this_thread::interruption_enabled());
    });
    boost::thread([this] { adapter.reset(); }).join();
}

TEST_F(CServiceManagerAdapterTest, ItsEndSurvivesAFailedInvalidation) {
    openSession();
    EXPECT_CALL(*service, invalidate).WillOnce(Throw(updateFailed()));
    adapter.reset();
    EXPECT_THAT(FakeKovan::messages("FTL"), Contains(StartsWith("Exception caught during invalidating Service: ")));
}

TEST_F(CServiceManagerAdapterTest, ItsEndWithoutASessionInvalidatesNothing) {
    EXPECT_CALL(*service, invalidate).Times(0);
    adapter.reset();
}

} // namespace
} // namespace DAX::Tests
