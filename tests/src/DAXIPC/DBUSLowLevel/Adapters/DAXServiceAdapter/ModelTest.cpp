// Runs random operations of several clients against the real handler and the real service logic, and compares them with
// the reference model step by step.
#include <cstdlib>
#include <iostream>
#include <random>

#include <gmock/gmock.h>

#include "src/DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/ServiceBesideModel.h"
#include "support/DebugParameters.h"
#include "support/FakeKovan.h"
#include "support/TemporaryRoot.h"

namespace DAX::Tests {
namespace {

#ifdef __SANITIZE_THREAD__
const int STEPS = 1000; // the sanitizer keeps every stack that it meets, and exceptions make ever longer ones
#else
const int STEPS = 100000;
#endif

// The operations are the same in every run, so that a failure does not surprise whoever changes something else.
// DAX_MODEL_SEED chooses others: a number, or "random".
const unsigned int USUAL_SEED = 20260117;

unsigned int chosenSeed() {
    const char* const wanted = std::getenv("DAX_MODEL_SEED");
    if (wanted == nullptr) {
        return USUAL_SEED;
    }
    return std::string(wanted) == "random" ? std::random_device{}() : static_cast<unsigned int>(std::stoul(wanted));
}

class ModelTest : public testing::Test {
public:
    ModelTest() {
        const unsigned int seed = chosenSeed();
        random.seed(seed);
        std::cout << "seed " << seed << std::endl;
    }

    int number(int least, int most) { return std::uniform_int_distribution<int>(least, most)(random); }
    bool rarely() { return number(1, 15) == 1; }
    std::string connection() { return ":1." + std::to_string(number(1, 9)); }
    std::string clientName() { return "client" + std::to_string(number(1, 4)); }
    std::string proxy() { return "Proxy-" + std::to_string(number(1, 6)); }
    std::string reason() { return "reason " + std::to_string(number(1, 1000)); }

    // Usually the connection that may call; sometimes another one.
    std::string likely(const std::string& probable) { return rarely() || probable.empty() ? connection() : probable; }

    void getService();
    void hello();
    void getClientPriority();
    void startNewTransaction();
    void invalidate();
    void isSearchingPossible();
    void cancel();
    void acquireLock();
    void releaseLock();
    void disconnect();
    void changePowerMode();
    void setInstallationLock();

    TemporaryRoot root{TemporaryRoot::SAME_FOR_ALL};
    DebugParameters debugParameters;
    ServiceBesideModel service;
    std::mt19937 random;
    std::string sessionSender, transactionSender; // who said hello last
    std::string sessionProxy, transactionProxy;
};

void ModelTest::getService() {
    const std::string proxyName = proxy();
    service.getService(connection(), number(-2, 7), clientName(), number(0, 3), proxyName);
    if (!service.result().text.empty()) {
        sessionProxy = proxyName;
    }
}

void ModelTest::hello() {
    const std::string from = connection();
    const std::string proxyName = rarely() ? proxy() : number(0, 1) == 0 ? sessionProxy : transactionProxy;
    (proxyName == sessionProxy ? sessionSender : transactionSender) = from;
    service.hello(from, proxyName);
}

void ModelTest::getClientPriority() {
    service.getClientPriority(likely(sessionSender));
}

void ModelTest::startNewTransaction() {
    const std::string proxyName = proxy();
    service.startNewTransaction(likely(sessionSender), number(0, 5), proxyName, rarely());
    if (service.result().normal) {
        transactionProxy = proxyName;
    }
}

void ModelTest::invalidate() {
    service.invalidate(likely(sessionSender), reason());
}

void ModelTest::isSearchingPossible() {
    service.isSearchingPossible(likely(transactionSender));
}

void ModelTest::cancel() {
    service.cancel(likely(transactionSender), reason(), rarely());
}

void ModelTest::acquireLock() {
    service.acquireLock(connection(), clientName(), number(-2, 7));
}

void ModelTest::releaseLock() {
    const auto& locks = service.model().locks();
    const bool known = !locks.empty() && !rarely();
    auto lock = locks.begin();
    std::advance(lock, known ? number(0, static_cast<int>(locks.size()) - 1) : 0);
    const unsigned int id = known ? lock->first : static_cast<unsigned int>(number(0, 50));
    service.releaseLock(connection(), known && !rarely() ? lock->second.first : clientName(), id);
}

void ModelTest::disconnect() {
    service.disconnect(likely(service.model().subscribed().value_or("")));
}

void ModelTest::changePowerMode() {
    service.changePowerMode();
}

void ModelTest::setInstallationLock() {
    service.setInstallationLock(number(1, 4) == 1);
}

TEST_F(ModelTest, AgreesOverRandomOperations) {
    using Operation = void (ModelTest::*)();
    const std::vector<std::pair<const char*, Operation>> operations{
        {"getService", &ModelTest::getService},
        {"getService", &ModelTest::getService},
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
        {"changePowerMode", &ModelTest::changePowerMode},
        {"setInstallationLock", &ModelTest::setInstallationLock},
    };
    for (int step = 0; step < STEPS; ++step) {
        const auto& [name, operation] =
            operations[static_cast<std::size_t>(number(0, static_cast<int>(operations.size()) - 1))];
        (this->*operation)();
        const std::string difference = service.difference();
        ASSERT_TRUE(difference.empty()) << "step " << step << ", " << name << ":\n" << difference;
    }
}

} // namespace
} // namespace DAX::Tests
