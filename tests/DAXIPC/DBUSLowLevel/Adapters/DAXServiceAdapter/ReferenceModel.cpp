#include "DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/ReferenceModel.h"

#include <algorithm>

namespace DAX {
namespace Tests {

namespace {

const char* const BUS_NAME = "org.kovan.tv.dax.service.servicemanager";
const char* const NOBODY = "<not-set>";

} // namespace

ReferenceModel::Session::Session(ReferenceModel& owner, int rank, std::string client, int purpose)
    : model(owner), priority(rank), name(std::move(client)), type(purpose) {
    model.m_priorityKey = priority;
}

ReferenceModel::Session::~Session() {
    stop("Stopping ServiceTransaction in CService destructor.");
    model.m_priorityKey = -1;
}

void ReferenceModel::Session::stop(const std::string& reason) {
    if (transaction) {
        model.coreCancels(reason);
        transaction.reset();
    }
}

void ReferenceModel::Session::invalidate(const std::string& reason) {
    if (valid) {
        valid = false;
        stop("Invalidating CService - reason: " + reason);
    }
}

void ReferenceModel::coreCancels(const std::string& reason) {
    m_coreCalls.push_back(
        "cancelCoreTransaction(cancelServiceTransaction() is canceling CoreTransaction. Reason: " + reason + ")");
}

bool ReferenceModel::isLockedFor(int priority) const {
    return std::any_of(m_locks.begin(), m_locks.end(),
                       [priority](const auto& lock) { return lock.second.second >= priority; });
}

bool ReferenceModel::mayUseService(const std::string& connection) const {
    return m_service && m_service->sender == connection;
}

bool ReferenceModel::mayUseTransaction(const std::string& connection) const {
    return m_transaction && m_transaction->sender == connection && !m_transaction->transaction.expired();
}

Expected ReferenceModel::getService(const std::string& connection, int priority, const std::string& name, int type,
                                    const std::string& proxy) {
    const auto owner = m_current.lock();
    if (isLockedFor(priority) || (owner && (owner->name == name || owner->priority >= priority))) {
        return Expected::value("");
    }
    if (owner) {
        owner->invalidate("Invalidating service because higher priority client requested service: " + name);
    }
    auto session = std::make_shared<Session>(*this, priority, name, type);
    m_current = session;
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
        m_service->sender = connection;
    } else if (m_transaction && m_transaction->proxy == proxy) {
        m_transaction->sender = connection;
    }
    return Expected::value("");
}

Expected ReferenceModel::getClientPriority(const std::string& connection) const {
    return mayUseService(connection)
               ? Expected::value(std::to_string(static_cast<unsigned int>(m_service->session->priority)))
               : Expected::exception("DAXUnknownException");
}

Expected ReferenceModel::startNewTransaction(const std::string& connection, int upgradeType, const std::string& proxy,
                                             bool coreRefuses) {
    if (!mayUseService(connection)) {
        return Expected::exception("DAXUnknownException");
    }
    Session& session = *m_service->session;
    if (session.valid) {
        session.stop("There already is an active ServiceTransaction. Canceling it to create new ServiceTransaction.");
        m_coreCalls.push_back("getCurrentVersion()");
        m_coreCalls.push_back("createTransaction(upgradeType " + std::to_string(upgradeType) + ", transactionType " +
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
    m_coreCalls.push_back("isSearchingPossible()");
    return Expected::value("1");
}

Expected ReferenceModel::cancel(const std::string& connection, const std::string& reason, bool coreFails) {
    if (!mayUseTransaction(connection)) {
        return Expected::exception("TransactionInvalidatedException");
    }
    coreCancels(reason);
    if (coreFails) {
        return Expected::exception("CUpdateFailed");
    }
    m_transaction.reset();
    return Expected::value("");
}

Expected ReferenceModel::acquireLock(const std::string& name, int priority) {
    const unsigned int id = ++m_lastLock;
    if (const auto owner = m_current.lock()) {
        if (owner->priority >= priority) {
            return Expected::exception("ExternalLockDenied");
        }
        owner->invalidate("Invalidating service because external lock was acquired: " + name);
    }
    m_locks[id] = {name, priority};
    m_current.reset();
    if (priority > 3) {
        m_lockKey = 1;
    }
    return Expected::value(std::to_string(id));
}

Expected ReferenceModel::releaseLock(const std::string& name, unsigned int id) {
    const auto found = m_locks.find(id);
    if (found == m_locks.end() || found->second.first != name) {
        return Expected::exception("DAXUnknownException");
    }
    m_locks.erase(found);
    if (!isLockedFor(4)) {
        m_lockKey = 0;
    }
    return Expected::value("");
}

bool ReferenceModel::disconnect(const std::string& connection) {
    if (!m_service) {
        return true;
    }
    if (m_service->creator != connection) {
        return false;
    }
    m_service->session->invalidate("Invalidating Service, because ServiceManager client disconnected: " + connection +
                                   ". Current Service client: " + m_service->sender +
                                   ". Proxy name: " + m_service->proxy);
    m_service.reset();
    return true;
}

} // namespace Tests
} // namespace DAX
