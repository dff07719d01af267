#include "src/DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/ServiceBesideModel.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <boost/serialization/optional.hpp>

#include "DAXCommon/UserInterestExceptions.h"
#include "Platform/ProductPaths/IProductPaths.h"
#include "Service/ServiceManager/CServiceManagerFactory.h"
#include "Utility/Utils/GenericException.h"
#include "support/FakeKovan.h"

namespace DAX::Tests {
namespace {

const char* const PRIORITY_KEY = "memory/menu/support/softwareupdate/currentServiceClientPriority";
const char* const LOCK_KEY = "memory/menu/support/softwareupdate/isExternalLockAcquired";

// Lock numbers keep counting up through the life of the process, with every request. This is the number at the start.
unsigned int& requestedLocks() {
    static unsigned int count = 0;
    return count;
}

template <class Value>
std::string inWords(const Value& value) {
    std::ostringstream text;
    text << value;
    return text.str();
}

template <class Value>
std::string resultOf(const Reply& reply) {
    return reply.normal ? inWords(reply.value<Value>()) : std::string();
}

boost::optional<int> integerSetting(const char* key) {
    const auto value = FakeKovan::setting(key);
    return value ? boost::optional<int>(std::get<int>(*value)) : boost::none;
}

// What happened, without the log lines for developers, which tell the place in the source where an exception was
// thrown.
std::vector<std::string> effectsSoFar() {
    std::vector<std::string> effects = FakeKovan::journal();
    effects.erase(std::remove_if(effects.begin(), effects.end(),
                                 [](const std::string& effect) { return effect.compare(0, 8, "log DBG ") == 0; }),
                  effects.end());
    return effects;
}

std::string listed(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += "    " + line + "\n";
    }
    return text;
}

std::string describe(const Expected& result) {
    return (result.normal ? "{" : "exception {") + result.text + "}";
}

// The two sides of one comparison, when they differ.
template <class Value>
void add(std::string& differences, const std::string& what, const Value& real, const Value& expected) {
    if (real != expected) {
        differences += what + " is " + inWords(real) + ", expected " + inWords(expected) + "\n";
    }
}

void createFile(const std::string& path) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    if (!std::ofstream(path)) {
        throw std::runtime_error("cannot create " + path);
    }
}

} // namespace

ServiceBesideModel::ServiceBesideModel()
    : m_core(std::make_shared<FakeCoreScript>())
    , m_powerMode(std::make_shared<FakePowerModeScript>())
    , m_model(requestedLocks()) {
    FakeKovan::removeSetting(PRIORITY_KEY);
    FakeKovan::removeSetting(LOCK_KEY);
    // Both keys are read for each transaction; a missing one would add a line to the log.
    FakeKovan::setSetting("db/menu/support/softwareupdate/was_successfull_upgrade", 0);
    FakeKovan::setSetting("db/menu/support/softwareupdate/use_cellular_int", 0);
    setInstallationLock(false);
    m_handler = std::make_unique<DAXIPC::DBUSLowLevel::CServiceManagerAdapter>(
        std::make_shared<Service::CServiceManagerFactory>(std::make_shared<FakeCoreFactory>(m_core),
                                                          std::make_shared<FakePowerModeFactory>(m_powerMode)));
    m_handler->useThisEventSubscriber(m_subscription);
    m_core->observer = [](const std::string& call) { FakeKovan::note("core " + call); };
    forget();
}

ServiceBesideModel::~ServiceBesideModel() {
    m_handler.reset();
    m_core->observer = nullptr;
}

Reply ServiceBesideModel::call(const std::string& from, const std::string& method, const std::string& parameters) {
    return AdapterClient(*m_handler, from).callWith(method, parameters);
}

void ServiceBesideModel::compare(const Reply& reply, const std::string& value, const Expected& expected) {
    m_result = reply.normal ? Expected::value(value) : Expected::exception(reply.exceptionName);
    m_expected = expected;
}

void ServiceBesideModel::getService(const std::string& from, int priority, const std::string& name, int type,
                                    const std::string& proxy) {
    const Reply reply = call(from, "getService", archiveOf(priority, name, type, proxy, from));
    compare(reply, resultOf<std::string>(reply), m_model.getService(from, priority, name, type, proxy));
}

Expected ServiceBesideModel::realOwner() {
    const Reply reply = call(":1.0", "getServiceOwner", "");
    bool owned = false;
    int priority = 0, type = 0;
    std::string name;
    reply.read(owned, priority, name, type);
    return Expected::value(owned ? "1 " + inWords(priority) + " " + name + " " + inWords(type) : std::string("0"));
}

void ServiceBesideModel::hello(const std::string& from, const std::string& proxy) {
    compare(call(from, "helloMessage", archiveOf(proxy)), "", m_model.hello(from, proxy));
}

void ServiceBesideModel::getClientPriority(const std::string& from) {
    const Reply reply = call(from, "getClientPriority", archiveOf());
    compare(reply, resultOf<unsigned int>(reply), m_model.getClientPriority(from));
}

void ServiceBesideModel::startNewTransaction(const std::string& from, int upgradeType, const std::string& proxy,
                                             bool coreRefuses) {
    m_core->refusesTransactions = coreRefuses;
    const Reply reply = call(from, "startNewTransaction", archiveOf(upgradeType, proxy, from));
    compare(reply, resultOf<std::string>(reply),
            m_model.startNewTransaction(from, upgradeType, proxy, from, coreRefuses));
}

void ServiceBesideModel::invalidate(const std::string& from, const std::string& reason) {
    compare(call(from, "invalidate", archiveOf(reason)), "", m_model.invalidate(from, reason));
}

void ServiceBesideModel::isSearchingPossible(const std::string& from) {
    const Reply reply = call(from, "isSearchingPossible", archiveOf());
    const std::string value = reply.normal ? inWords(*reply.value<boost::optional<bool>>()) : std::string();
    compare(reply, value, m_model.isSearchingPossible(from));
}

void ServiceBesideModel::cancel(const std::string& from, const std::string& reason, bool coreFails) {
    if (coreFails) {
        m_core->fail("cancelCoreTransaction", UserInterestExceptions::CUpdateFailed());
    }
    const Reply reply = call(from, "cancelServiceTransaction", archiveOf(reason));
    m_core->mend("cancelCoreTransaction");
    compare(reply, "", m_model.cancel(from, reason, coreFails));
}

void ServiceBesideModel::acquireLock(const std::string& from, const std::string& name, int priority) {
    ++requestedLocks();
    const Reply reply = call(from, "acquireExternalLock", archiveOf(name, priority));
    compare(reply, resultOf<unsigned int>(reply), m_model.acquireLock(name, priority));
}

void ServiceBesideModel::releaseLock(const std::string& from, const std::string& name, unsigned int id) {
    compare(call(from, "releaseExternalLock", archiveOf(name, id)), "", m_model.releaseLock(name, id));
}

void ServiceBesideModel::disconnect(const std::string& connection) {
    m_expected = m_model.disconnect(connection) ? Expected::value("") : Expected::exception("GenericException");
    try {
        m_handler->clientDisconnected(connection.c_str());
        m_result = Expected::value("");
    } catch (const Common::Utils::GenericException&) {
        m_result = Expected::exception("GenericException");
    }
}

void ServiceBesideModel::changePowerMode() {
    m_powerMode->change(DAXCommon::PowerMode());
    m_model.changePowerMode();
    m_result = m_expected = Expected::value("");
}

void ServiceBesideModel::setInstallationLock(bool locked) {
    const std::string path = Platform::IProductPaths::getInstallationLockPath().string();
    if (locked) {
        createFile(path);
    } else {
        std::filesystem::remove(path);
    }
    m_model.setInstallationLock(locked);
    m_result = m_expected = Expected::value("");
}

void ServiceBesideModel::end() {
    m_handler.reset();
    m_model.end();
    m_result = m_expected = Expected::value("");
}

std::string ServiceBesideModel::difference() {
    std::string differences;
    add(differences, "the result", describe(m_result), describe(m_expected));
    const std::vector<std::string> effects = effectsSoFar(), expected = m_model.takeEffects();
    if (effects != expected) {
        differences += "what happened is\n" + listed(effects) + "  expected\n" + listed(expected);
    }
    FakeKovan::forgetRecords();
    add(differences, "the key of the priority", integerSetting(PRIORITY_KEY), m_model.priorityKey());
    add(differences, "the key of the locks", integerSetting(LOCK_KEY), m_model.lockKey());
    if (m_handler) {
        add(differences, "the subscription", m_subscription.connection(), m_model.subscribed());
        add(differences, "the owner", realOwner().text, m_model.getServiceOwner().text);
    }
    return differences;
}

void ServiceBesideModel::forget() {
    FakeKovan::forgetRecords();
    m_core->takeCalls();
    m_model.takeEffects();
}

} // namespace DAX::Tests
