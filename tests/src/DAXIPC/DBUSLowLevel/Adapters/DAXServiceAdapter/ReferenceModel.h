#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <boost/optional.hpp>

namespace DAX::Tests {

// The expected answer to one call: a value in words, or the name of an exception.
struct Expected {
    bool normal;
    std::string text;

    static Expected value(std::string text) { return {true, std::move(text)}; }
    static Expected exception(std::string name) { return {false, std::move(name)}; }

    bool operator==(const Expected& other) const { return normal == other.normal && text == other.text; }
    bool operator!=(const Expected& other) const { return !(*this == other); }
};

// The rules of arbitration, sessions, transactions and locks, as short as possible: what every call returns, which
// calls reach the core, what is logged, and what the two settings keys hold. It gets the same operations as the real
// service.
class ReferenceModel {
public:
    // `lastLock` is the number of external locks that the process has asked for already.
    explicit ReferenceModel(unsigned int lastLock = 0) : m_lastLock(lastLock) {}

    Expected getService(const std::string& connection, int priority, const std::string& name, int type,
                        const std::string& proxy);
    Expected getServiceOwner() const;
    Expected hello(const std::string& connection, const std::string& proxy);
    Expected getClientPriority(const std::string& connection);
    Expected startNewTransaction(const std::string& connection, int upgradeType, const std::string& proxy,
                                 const std::string& connectionId, bool coreRefuses);
    Expected invalidate(const std::string& connection, const std::string& reason);
    Expected isSearchingPossible(const std::string& connection);
    Expected cancel(const std::string& connection, const std::string& reason, bool coreFails);
    Expected acquireLock(const std::string& name, int priority);
    Expected releaseLock(const std::string& name, unsigned int id);

    // The subscribed connection leaves, or another one is reported to have left. Returns false for the latter, which is
    // an error.
    bool disconnect(const std::string& connection);

    void changePowerMode();
    void setInstallationLock(bool locked) { m_installationLocked = locked; }

    // The handler and the manager behind it are destroyed. Nothing may follow.
    void end();

    const boost::optional<std::string>& subscribed() const { return m_subscribed; }
    boost::optional<int> priorityKey() const { return m_priorityKey; }
    boost::optional<int> lockKey() const { return m_lockKey; }
    const std::map<unsigned int, std::pair<std::string, int>>& locks() const { return m_locks; }
    unsigned int lastLock() const { return m_lastLock; }
    bool isLockedFor(int priority) const;

    // The connection that has said hello for the transaction.
    boost::optional<std::string> transactionSender() const;

    // What happened since the last call of this, in order, in the words of FakeKovan's journal: "log INF Reset done.",
    // "write <key>=<value>", and "core createTransaction(...)" for a call of the core.
    std::vector<std::string> takeEffects() { return std::exchange(m_effects, {}); }

    // Everything that decides how this model answers from now on, and nothing else. No operations can tell two models
    // with the same state apart, except by the numbers of their locks, which come in the same order. Names and proxies
    // must not contain blanks.
    std::string state() const;

private:
    struct Session {
        Session(ReferenceModel& owner, int rank, std::string client, int purpose);
        ~Session();
        void stop(const std::string& reason);
        void invalidate(const std::string& reason);
        void publish(int value);

        ReferenceModel& model;
        int priority;
        std::string name;
        int type;
        bool valid = true;
        std::shared_ptr<int> transaction;
    };
    struct ServiceEntry {
        std::string creator, proxy, sender;
        std::shared_ptr<Session> session;
    };
    struct TransactionEntry {
        std::string proxy, sender;
        std::weak_ptr<int> transaction;
    };

    bool isGranted(int priority, const std::string& name);
    bool mayUseService(const std::string& connection);
    bool mayUseTransaction(const std::string& connection);
    std::string serviceClient() const;
    void publishLockKey(int value);
    void cancelTransaction(const std::string& reason);
    void coreHears(const std::string& call) { m_effects.push_back("core " + call); }
    void log(const std::string& level, const std::string& message) {
        m_effects.push_back("log " + level + " " + message);
    }

    std::vector<std::string> m_effects;
    unsigned int m_lastLock;
    bool m_installationLocked = false;
    std::map<unsigned int, std::pair<std::string, int>> m_locks;
    std::weak_ptr<Session> m_current;
    boost::optional<TransactionEntry> m_transaction;
    boost::optional<std::string> m_subscribed;
    boost::optional<int> m_priorityKey;
    boost::optional<int> m_lockKey;
    boost::optional<ServiceEntry> m_service; // last, since the end of a session has effects
};

} // namespace DAX::Tests
