// Random operations of several clients against the real handler and the real service logic, compared step by step with
// the reference model: what each call gives, what the core hears, what the settings keys hold.
#include <cstdlib>
#include <iostream>
#include <random>

#include <boost/archive/text_iarchive.hpp>

#include <boost/serialization/optional.hpp>

#include "DAXCommon/UserInterestExceptions.h"
#include "DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/AdapterClient.h"
#include "DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/Implementation/CServiceManagerAdapter.h"
#include "DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/MockService.h"
#include "DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/ReferenceModel.h"
#include "Service/ServiceManager/CServiceManagerFactory.h"
#include "support/DebugParameters.h"
#include "support/FakeCore.h"
#include "support/FakeKovan.h"
#include "support/FakePowerMode.h"
#include "support/TemporaryRoot.h"

namespace DAX {
namespace Tests {
namespace {

#ifdef __SANITIZE_THREAD__
const int STEPS = 1000; // the sanitizer keeps every stack that it meets, and exceptions make ever longer ones
#else
const int STEPS = 100000;
#endif
const char* const PRIORITY_KEY = "memory/menu/support/softwareupdate/currentServiceClientPriority";
const char* const LOCK_KEY = "memory/menu/support/softwareupdate/isExternalLockAcquired";

// Remembers the one subscription, as the adapter of the bus does.
class Subscription : public Common::DBUSWrapper::IDBUSEventsSubscriber {
public:
    void subscribeForConnectionCloseEvent(const std::string& connection) override { m_connection = connection; }
    void unsubscribeFromConnectionCloseEvent() override { m_connection.reset(); }
    const boost::optional<std::string>& connection() const { return m_connection; }

private:
    boost::optional<std::string> m_connection;
};

boost::optional<int> integerSetting(const char* key) {
    const auto value = FakeKovan::setting(key);
    return value ? boost::optional<int>(std::get<int>(*value)) : boost::none;
}

class ModelTest : public testing::Test {
public:
    ModelTest()
        : core(std::make_shared<FakeCoreScript>())
        , adapter(std::make_shared<Service::CServiceManagerFactory>(
              std::make_shared<FakeCoreFactory>(core),
              std::make_shared<FakePowerModeFactory>(std::make_shared<FakePowerModeScript>()))) {
        adapter.useThisEventSubscriber(subscription);
        core->takeCalls();
        const char* seed = std::getenv("DAX_MODEL_SEED");
        const auto chosen = seed != nullptr ? static_cast<unsigned int>(std::stoul(seed)) : std::random_device{}();
        random.seed(chosen);
        std::cout << "seed " << chosen << std::endl;
    }

    int number(int least, int most) { return std::uniform_int_distribution<int>(least, most)(random); }
    bool rarely() { return number(1, 15) == 1; }
    std::string connection() { return ":1." + std::to_string(number(1, 9)); }
    std::string clientName() { return "client" + std::to_string(number(1, 4)); }
    std::string proxy() { return "Proxy-" + std::to_string(number(1, 6)); }
    std::string reason() { return "reason " + std::to_string(number(1, 1000)); }

    // Usually the connection that may; sometimes another.
    std::string likely(const std::string& probable) { return rarely() || probable.empty() ? connection() : probable; }

    Reply call(const std::string& from, const std::string& method, const std::string& parameters) {
        return AdapterClient(adapter, from).callWith(method, parameters);
    }

    template <class Value>
    static std::string inWords(const Value& value) {
        std::ostringstream text;
        text << value;
        return text.str();
    }

    template <class Value>
    static std::string resultOf(const Reply& reply) {
        return reply.normal ? inWords(reply.value<Value>()) : std::string();
    }

    // The words of one step, and whether the real thing and the model agree on it.
    void compare(const std::string& step, const Expected& expected, const Reply& reply, const std::string& result) {
        ASSERT_EQ(reply.normal, expected.normal) << step << ": " << reply.exceptionName;
        ASSERT_EQ(reply.normal ? result : reply.exceptionName, expected.text) << step;
    }

    void compareState(const std::string& step) {
        ASSERT_EQ(core->takeCalls(), model.takeCoreCalls()) << step;
        ASSERT_EQ(integerSetting(PRIORITY_KEY), model.priorityKey()) << step;
        ASSERT_EQ(integerSetting(LOCK_KEY), model.lockKey()) << step;
        ASSERT_EQ(subscription.connection(), model.subscribed()) << step;
    }

    void getService();
    void getServiceOwner();
    void hello();
    void getClientPriority();
    void startNewTransaction();
    void invalidate();
    void isSearchingPossible();
    void cancel();
    void acquireLock();
    void releaseLock();
    void disconnect();

    TemporaryRoot root{TemporaryRoot::SAME_FOR_ALL};
    DebugParameters debugParameters;
    std::shared_ptr<FakeCoreScript> core;
    Subscription subscription;
    DAXIPC::DBUSLowLevel::CServiceManagerAdapter adapter;
    ReferenceModel model;
    std::mt19937 random;
    std::string sessionSender, transactionSender; // who said hello last
    std::string sessionProxy, transactionProxy;
};

void ModelTest::getService() {
    const std::string from = connection(), name = clientName(), proxyName = proxy();
    const int priority = number(-2, 7), type = number(0, 3);
    const Reply reply = call(from, "getService", archiveOf(priority, name, type, proxyName, from));
    const Expected expected = model.getService(from, priority, name, type, proxyName);
    if (!expected.text.empty()) {
        sessionProxy = proxyName;
    }
    compare("getService " + name, expected, reply, resultOf<std::string>(reply));
}

void ModelTest::getServiceOwner() {
    const Reply reply = call(connection(), "getServiceOwner", "");
    bool owned = false;
    int priority = 0, type = 0;
    std::string name;
    reply.read(owned, priority, name, type);
    const std::string result = owned ? "1 " + inWords(priority) + " " + name + " " + inWords(type) : std::string("0");
    compare("getServiceOwner", model.getServiceOwner(), reply, result);
}

void ModelTest::hello() {
    const std::string from = connection();
    const std::string proxyName = rarely() ? proxy() : number(0, 1) == 0 ? sessionProxy : transactionProxy;
    (proxyName == sessionProxy ? sessionSender : transactionSender) = from;
    const Reply reply = call(from, "helloMessage", archiveOf(proxyName));
    compare("helloMessage " + proxyName, model.hello(from, proxyName), reply, "");
}

void ModelTest::getClientPriority() {
    const std::string from = likely(sessionSender);
    const Reply reply = call(from, "getClientPriority", archiveOf());
    compare("getClientPriority", model.getClientPriority(from), reply, resultOf<unsigned int>(reply));
}

void ModelTest::startNewTransaction() {
    const std::string from = likely(sessionSender), proxyName = proxy();
    const int type = number(0, 5);
    core->refusesTransactions = rarely();
    const Reply reply = call(from, "startNewTransaction", archiveOf(type, proxyName, from));
    const Expected expected = model.startNewTransaction(from, type, proxyName, core->refusesTransactions);
    if (expected.normal) {
        transactionProxy = proxyName;
    }
    compare("startNewTransaction", expected, reply, resultOf<std::string>(reply));
}

void ModelTest::invalidate() {
    const std::string from = likely(sessionSender), why = reason();
    const Reply reply = call(from, "invalidate", archiveOf(why));
    compare("invalidate", model.invalidate(from, why), reply, "");
}

void ModelTest::isSearchingPossible() {
    const std::string from = likely(transactionSender);
    const Reply reply = call(from, "isSearchingPossible", archiveOf());
    const std::string result = reply.normal ? inWords(*reply.value<boost::optional<bool>>()) : std::string();
    compare("isSearchingPossible", model.isSearchingPossible(from), reply, result);
}

void ModelTest::cancel() {
    const std::string from = likely(transactionSender), why = reason();
    const bool fails = rarely();
    if (fails) {
        core->fail("cancelCoreTransaction", UserInterestExceptions::CUpdateFailed());
    }
    const Reply reply = call(from, "cancelServiceTransaction", archiveOf(why));
    core->mend("cancelCoreTransaction");
    compare("cancelServiceTransaction", model.cancel(from, why, fails), reply, "");
}

void ModelTest::acquireLock() {
    const std::string name = clientName();
    const int priority = number(-2, 7);
    const Reply reply = call(connection(), "acquireExternalLock", archiveOf(name, priority));
    compare("acquireExternalLock " + name, model.acquireLock(name, priority), reply, resultOf<unsigned int>(reply));
}

void ModelTest::releaseLock() {
    const auto& locks = model.locks();
    const bool known = !locks.empty() && !rarely();
    auto lock = locks.begin();
    std::advance(lock, known ? number(0, static_cast<int>(locks.size()) - 1) : 0);
    const unsigned int id = known ? lock->first : static_cast<unsigned int>(number(0, 50));
    const std::string name = known && !rarely() ? lock->second.first : clientName();
    const Reply reply = call(connection(), "releaseExternalLock", archiveOf(name, id));
    compare("releaseExternalLock " + name, model.releaseLock(name, id), reply, "");
}

void ModelTest::disconnect() {
    const std::string leaving = likely(model.subscribed().value_or(""));
    if (model.disconnect(leaving)) {
        EXPECT_NO_THROW(adapter.clientDisconnected(leaving.c_str()));
    } else {
        EXPECT_THROW(adapter.clientDisconnected(leaving.c_str()), Common::Utils::GenericException);
    }
}

TEST_F(ModelTest, AgreesOverRandomOperations) {
    using Operation = void (ModelTest::*)();
    const std::vector<std::pair<const char*, Operation>> operations{
        {"getService", &ModelTest::getService},
        {"getService", &ModelTest::getService},
        {"getServiceOwner", &ModelTest::getServiceOwner},
        {"hello", &ModelTest::hello},
        {"hello", &ModelTest::hello},
        {"hello", &ModelTest::hello},
        {"getClientPriority", &ModelTest::getClientPriority},
        {"startNewTransaction", &ModelTest::startNewTransaction},
        {"startNewTransaction", &ModelTest::startNewTransaction},
        {"invalidate", &ModelTest::invalidate},
        {"isSearchingPossible", &ModelTest::isSearchingPossible},
        {"isSearchingPossible", &ModelTest::isSearchingPossible},
        {"cancel", &ModelTest::cancel},
        {"acquireLock", &ModelTest::acquireLock},
        {"releaseLock", &ModelTest::releaseLock},
        {"releaseLock", &ModelTest::releaseLock},
        {"disconnect", &ModelTest::disconnect},
    };
    for (int step = 0; step < STEPS; ++step) {
        const auto& [name, operation] =
            operations[static_cast<std::size_t>(number(0, static_cast<int>(operations.size()) - 1))];
        (this->*operation)();
        compareState("step " + std::to_string(step) + ", " + name);
        ASSERT_FALSE(HasFailure()) << "step " << step << ", " << name;
        if (step % 1000 == 0) {
            FakeKovan::forgetRecords();
        }
    }
}

} // namespace
} // namespace Tests
} // namespace DAX
