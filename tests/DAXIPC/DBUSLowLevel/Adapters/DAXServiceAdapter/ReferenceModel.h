#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <boost/optional.hpp>

namespace DAX {
namespace Tests {

// What a client is expected to get for one call: a value in words, or the name of an exception.
struct Expected {
    bool normal;
    std::string text;

    static Expected value(std::string text) { return {true, std::move(text)}; }
    static Expected exception(std::string name) { return {false, std::move(name)}; }
};

// The rules of arbitration, sessions, transactions and locks, in as few lines as they can be told in: what every call
// gives, what the core hears, what the two settings keys hold. Fed with the same operations as the real thing.
class ReferenceModel {
public:
    Expected getService(const std::string& connection, int priority, const std::string& name, int type,
                        const std::string& proxy);
    Expected getServiceOwner() const;
    Expected hello(const std::string& connection, const std::string& proxy);
    Expected getClientPriority(const std::string& connection) const;
    Expected startNewTransaction(const std::string& connection, int upgradeType, const std::string& proxy,
                                 bool coreRefuses);
    Expected invalidate(const std::string& connection, const std::string& reason);
    Expected isSearchingPossible(const std::string& connection);
    Expected cancel(const std::string& connection, const std::string& reason, bool coreFails);
    Expected acquireLock(const std::string& name, int priority);
    Expected releaseLock(const std::string& name, unsigned int id);

    // The subscribed connection leaves, or another one is said to have left. False: the second is an error.
    bool disconnect(const std::string& connection);

    const boost::optional<std::string>& subscribed() const { return m_subscribed; }
    std::vector<std::string> takeCoreCalls() { return std::exchange(m_coreCalls, {}); }
    boost::optional<int> priorityKey() const { return m_priorityKey; }
    boost::optional<int> lockKey() const { return m_lockKey; }
    const std::map<unsigned int, std::pair<std::string, int>>& locks() const { return m_locks; }

private:
    struct Session {
        Session(ReferenceModel& owner, int rank, std::string client, int purpose);
        ~Session();
        void stop(const std::string& reason);
        void invalidate(const std::string& reason);

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

    bool isLockedFor(int priority) const;
    bool mayUseService(const std::string& connection) const;
    bool mayUseTransaction(const std::string& connection) const;
    void coreCancels(const std::string& reason);

    unsigned int m_lastLock = 0;
    std::map<unsigned int, std::pair<std::string, int>> m_locks;
    boost::optional<ServiceEntry> m_service;
    std::weak_ptr<Session> m_current;
    boost::optional<TransactionEntry> m_transaction;
    boost::optional<std::string> m_subscribed;
    std::vector<std::string> m_coreCalls;
    boost::optional<int> m_priorityKey;
    boost::optional<int> m_lockKey;
};

} // namespace Tests
} // namespace DAX
