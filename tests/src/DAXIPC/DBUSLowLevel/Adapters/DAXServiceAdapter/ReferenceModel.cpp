#include "src/DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/ReferenceModel.h"

#include <algorithm>
#include <sstream>

namespace DAX::Tests {

namespace {

const char* const BUS_NAME = "org.kovan.tv.dax.service.servicemanager";
const char* const NOBODY = "<not-set>";
const std::string SETTINGS = "memory/menu/support/softwareupdate/";
const int BLOCKS_MAIN_APP = 4; // the lowest priority at which a lock does so

template <class Value>
std::string inWords(const boost::optional<Value>& value) {
    std::ostringstream text;
    if (value) {
        text << *value;
    }
    return text.str();
}

} // namespace

ReferenceModel::Session::Session(ReferenceModel& owner, int rank, std::string client, int purpose)
    : model(owner), priority(rank), name(std::move(client)), type(purpose) {
    publish(priority);
}

ReferenceModel::Session::~Session() {
    stop("Stopping ServiceTransaction in CService destructor.");
    publish(-1);
}

void ReferenceModel::Session::publish(int value) {
    model.m_priorityKey = value;
    model.m_effects.push_back("write " + SETTINGS + "currentServiceClientPriority=" + std::to_string(value));
}

void ReferenceModel::Session::stop(const std::string& reason) {
    if (!transaction) {
        model.log("INF", "Transaction does not exist. Nothing to do.");
        return;
    }
    model.cancelTransaction(reason);
    transaction.reset();
    model.log("INF", "Reset done.");
}

void ReferenceModel::Session::invalidate(const std::string& reason) {
    if (valid) {
        valid = false;
        stop("Invalidating CService - reason: " + reason);
        model.log("INF", "Invalidate done.");
    }
}

void ReferenceModel::cancelTransaction(const std::string& reason) {
    log("INF", "cancelServiceTransaction() reason: " + reason);
    coreHears("cancelCoreTransaction(cancelServiceTransaction() is canceling CoreTransaction. Reason: " + reason + ")");
}

void ReferenceModel::publishLockKey(int value) {
    m_lockKey = value;
    m_effects.push_back("write " + SETTINGS + "isExternalLockAcquired=" + std::to_string(value));
}

bool ReferenceModel::isLockedFor(int priority) const {
    return std::any_of(m_locks.begin(), m_locks.end(),
                       [priority](const auto& lock) { return lock.second.second >= priority; });
}

boost::optional<std::string> ReferenceModel::transactionSender() const {
    return m_transaction && m_transaction->sender != NOBODY ? boost::optional<std::string>(m_transaction->sender)
                                                            : boost::none;
}

bool ReferenceModel::mayUseService(const std::string& connection) {
    if (!m_service) {
        log("ERR", "m_service was already destroyed or was never created. Sender: " + connection);
    } else if (m_service->sender != connection) {
        log("ERR", "Accessing m_service that was created by a different sender. Proxy name: " + m_service->proxy +
                       ". Original sender: " + m_service->sender + ". Current sender: " + connection);
    }
    return m_service && m_service->sender == connection;
}

bool ReferenceModel::mayUseTransaction(const std::string& connection) {
    if (!m_transaction) {
        log("ERR", "m_serviceTransaction is already canceled or was never created. Sender: " + connection);
        return false;
    }
    const bool isOther = m_transaction->sender != connection;
    if (isOther || m_transaction->transaction.expired()) {
        log("ERR", std::string(isOther ? "Accessing m_serviceTransaction that was created by a different sender."
                                       : "m_serviceTransaction is already destroyed on the CService side.") +
                       " Proxy name: " + m_transaction->proxy + ". Original sender: " + m_transaction->sender +
                       ". Current sender: " + connection);
        return false;
    }
    return true;
}

// The old owner, if there is one, loses its session here.
bool ReferenceModel::isGranted(int priority, const std::string& name) {
    if (m_installationLocked) {
        log("INF", "Installation lock is acquired. There is no possibility to get service.");
        return false;
    }
    if (isLockedFor(priority)) {
        std::string holders;
        for (const auto& lock : m_locks) {
            holders += " " + lock.second.first;
        }
        log("INF", "External lock is acquired by: " + holders + ". There is no possibility to get service.");
        return false;
    }
    const auto owner = m_current.lock();
    if (!owner) {
        return true;
    }
    if (owner->name == name) {
        log("WRN",
            "Client " + name + " is requesting service while he already owns it. Request for service is rejected.");
        return false;
    }
    const bool granted = priority > owner->priority;
    log("ERR", "Currently requesting client " + name + " has lower priority than current owner " + owner->name +
                   (granted ? ". Current service will be invalidated." : ". Request for service is rejected."));
    if (granted) {
        owner->invalidate("Invalidating service because higher priority client requested service: " + name);
    }
    return granted;
}

Expected ReferenceModel::getService(const std::string& connection, int priority, const std::string& name, int type,
                                    const std::string& proxy) {
    log("INF", "Service is requested. Client name: " + name);
    if (!isGranted(priority, name)) {
        return Expected::value("");
    }
    auto session = std::make_shared<Session>(*this, priority, name, type);
    m_current = session;
    log("INF", "New Service for " + proxy + " created.");
    m_service = ServiceEntry{connection, proxy, NOBODY, std::move(session)};
    m_subscribed = connection;
    return Expected::value(BUS_NAME);
}

Expected ReferenceModel::getServiceOwner() const {
    const auto owner = m_current.lock();
    return Expected::value(
        owner ? "1 " + std::to_string(owner->priority) + " " + owner->name + " " + std::to_string(owner->type) : "0");
}

Expected ReferenceModel::hello(const std::string& connection, const std::string& proxy) {
    if (m_service && m_service->proxy == proxy) {
        log("INF", "Hello message for Service received: " + proxy + ", " + connection);
        m_service->sender = connection;
    } else if (m_transaction && m_transaction->proxy == proxy) {
        log("INF", "Hello message for ServiceTransaction received: " + proxy + ", " + connection);
        m_transaction->sender = connection;
    } else {
        log("WRN", "Neither Service nor ServiceTransaction created by proxy '" + proxy +
                       "' exist. Ignoring 'hello' message from sender: " + connection);
    }
    return Expected::value("");
}

Expected ReferenceModel::getClientPriority(const std::string& connection) {
    return mayUseService(connection)
               ? Expected::value(std::to_string(static_cast<unsigned int>(m_service->session->priority)))
               : Expected::exception("DAXUnknownException");
}

Expected ReferenceModel::startNewTransaction(const std::string& connection, int upgradeType, const std::string& proxy,
                                             const std::string& connectionId, bool coreRefuses) {
    if (!mayUseService(connection)) {
        return Expected::exception("DAXUnknownException");
    }
    log("INF", "Starting new service transaction for proxy: " + proxy + ", " + connectionId);
    Session& session = *m_service->session;
    if (session.valid) {
        log("INF", "Successful upgrade has not occurred since the last factory reset.");
        session.stop("There already is an active ServiceTransaction. Canceling it to create new ServiceTransaction.");
        coreHears("getCurrentVersion()");
        coreHears("createTransaction(upgradeType " + std::to_string(upgradeType) + ", transactionType " +
                  std::to_string(session.type) + ", cellular 0, upgraded 0)");
        if (coreRefuses) {
            return Expected::exception("DAXUnknownException");
        }
        session.transaction = std::make_shared<int>();
    }
    m_transaction = TransactionEntry{proxy, NOBODY, session.transaction};
    return Expected::value(BUS_NAME);
}

Expected ReferenceModel::invalidate(const std::string& connection, const std::string& reason) {
    if (!mayUseService(connection)) {
        return Expected::exception("DAXUnknownException");
    }
    m_service->session->invalidate(reason);
    m_subscribed.reset();
    m_service.reset();
    return Expected::value("");
}

Expected ReferenceModel::isSearchingPossible(const std::string& connection) {
    if (!mayUseTransaction(connection)) {
        return Expected::exception("TransactionInvalidatedException");
    }
    coreHears("isSearchingPossible()");
    return Expected::value("1");
}

Expected ReferenceModel::cancel(const std::string& connection, const std::string& reason, bool coreFails) {
    if (!mayUseTransaction(connection)) {
        return Expected::exception("TransactionInvalidatedException");
    }
    cancelTransaction(reason);
    if (coreFails) {
        return Expected::exception("CUpdateFailed");
    }
    m_transaction.reset();
    return Expected::value("");
}

Expected ReferenceModel::acquireLock(const std::string& name, int priority) {
    const unsigned int id = ++m_lastLock;
    const std::string acquired = "External lock " + std::to_string(id) + " is acquired by " + name;
    if (const auto owner = m_current.lock()) {
        if (owner->priority >= priority) {
            return Expected::exception("ExternalLockDenied");
        }
        log("INF", acquired + ". Current service, belonging to " + owner->name + ", will be invalidated.");
        owner->invalidate("Invalidating service because external lock was acquired: " + name);
    } else {
        log("INF", acquired);
    }
    m_locks[id] = {name, priority};
    m_current.reset();
    if (priority >= BLOCKS_MAIN_APP) {
        publishLockKey(1);
    }
    return Expected::value(std::to_string(id));
}

Expected ReferenceModel::releaseLock(const std::string& name, unsigned int id) {
    const auto found = m_locks.find(id);
    if (found == m_locks.end()) {
        log("ERR", "Client " + name + " is releasing a non-existent external lock " + std::to_string(id));
        return Expected::exception("DAXUnknownException");
    }
    if (found->second.first != name) {
        log("ERR", "Client " + name + " is releasing external lock " + std::to_string(id) + " that belongs to client " +
                       found->second.first);
        return Expected::exception("DAXUnknownException");
    }
    log("INF", "External lock " + std::to_string(id) + " is being released by " + name);
    m_locks.erase(found);
    if (!isLockedFor(BLOCKS_MAIN_APP)) {
        log("INF", "No external locks that block MainApp are locked any more.");
        publishLockKey(0);
    }
    return Expected::value("");
}

std::string ReferenceModel::serviceClient() const {
    return ". Current Service client: proxy name=" + m_service->proxy + " original sender=" + m_service->sender;
}

bool ReferenceModel::disconnect(const std::string& connection) {
    if (!m_service) {
        log("INF", "Client disconnected: " + connection + ". No Service is active.");
        return true;
    }
    if (m_service->creator != connection) {
        log("ERR", "Client disconnected: " + connection +
                       ". Service will not be invalidated, as it was created by ServiceManager client: " +
                       m_service->creator + serviceClient());
        return false;
    }
    log("INF", "Client disconnected. Invalidating Service created by this ServiceManager client: " + connection +
                   serviceClient());
    m_service->session->invalidate("Invalidating Service, because ServiceManager client disconnected: " + connection +
                                   ". Current Service client: " + m_service->sender +
                                   ". Proxy name: " + m_service->proxy);
    log("INF", "Resetting service.");
    m_service.reset();
    return true;
}

void ReferenceModel::changePowerMode() {
    log("INF", "PowerMode Changed, invalidate service");
    if (const auto owner = m_current.lock()) {
        log("INF", "service is stopped by power off.");
        owner->invalidate("Invalidating service due to power mode change.");
    } else {
        log("INF", "service is stopped but there is no active service now.");
    }
}

void ReferenceModel::end() {
    if (m_service) {
        m_service->session->invalidate("Invalidating Service in CServiceManagerAdapter destructor");
        m_service.reset();
    }
}

// A current session is always the one that the handler holds, and a living transaction always belongs to that session.
// So it is enough to say that they exist.
std::string ReferenceModel::state() const {
    std::ostringstream text;
    text << "installation lock " << m_installationLocked << "\nlocks";
    for (const auto& lock : m_locks) { // in order, without the numbers
        text << " " << lock.second.first << "/" << lock.second.second;
    }
    if (m_service) {
        const Session& session = *m_service->session;
        text << "\nservice " << m_service->creator << " " << m_service->proxy << " " << m_service->sender << " "
             << session.priority << " " << session.name << " " << session.type << " valid " << session.valid
             << " transaction " << (session.transaction != nullptr) << " current " << !m_current.expired();
    }
    if (m_transaction) {
        text << "\ntransaction " << m_transaction->proxy << " " << m_transaction->sender << " alive "
             << !m_transaction->transaction.expired();
    }
    text << "\nsubscribed " << inWords(m_subscribed) << "\nkeys " << inWords(m_priorityKey) << " "
         << inWords(m_lockKey);
    return text.str();
}

} // namespace DAX::Tests
