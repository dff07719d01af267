#pragma once

#include <cstddef>
#include <map>
#include <string>

#include "monitor/BoundedMap.h"
#include "monitor/BusEvent.h"
#include "monitor/BusMessage.h"

namespace monitor {

// Turns the messages of a bus into calls, answers and changes of owners, and knows which session and transaction each
// belongs to. However much comes, its memory stays the same: it forgets the oldest first.
class Conversation {
public:
    // Both outlive it.
    Conversation(EventSink& sink, Processes& processes) : m_sink(sink), m_processes(processes) {}

    // Who has the name of the service or of the core at the beginning.
    void setOwner(Side side, const std::string& connection) { m_owners[side] = connection; }

    // The next message. Those that have nothing to do with the service and the core are passed over.
    void take(const BusMessage& message);
    void note(std::int64_t time, const std::string& text) { m_sink.onNote({time, text}); }

private:
    // What a connection has become by its calls.
    struct Role {
        std::string client;
        std::string session;
        std::string transaction;
    };
    struct Session {
        std::string client;
    };
    struct Transaction {
        std::string session;
        std::string client;
    };
    // A call that waits for its answer.
    struct Pending {
        CallEvent call;
        std::string answerer; // the connection that is to answer it; empty when it is not known
    };
    using CallKey = std::pair<std::string, std::uint32_t>; // the caller and the serial

    void takeCall(const BusMessage& message);
    void takeAnswer(const BusMessage& message);
    void takeNameOwnerChanged(const BusMessage& message);
    std::optional<Side> sideOf(const BusMessage& message) const;
    std::string answererOf(const BusMessage& call, Side side) const;
    static bool isFromAnother(const BusMessage& answer, const Pending& pending);
    CallEvent describeCall(const BusMessage& message, Side side);
    AnswerEvent describeAnswer(const BusMessage& message, const CallEvent& call);
    void learnFromCall(CallEvent& call);
    void learnFromAnswer(const CallEvent& call, const AnswerEvent& answer);
    Caller callerOf(const std::string& connection);

    void forgetHolder();

    // A device has a handful of each.
    static constexpr std::size_t MOST = 4096;
    // Of all calls that wait for their answers, in bytes: tens of thousands, or fewer with long arguments.
    static constexpr std::size_t MOST_PENDING = 32 * 1024 * 1024;

    EventSink& m_sink;
    Processes& m_processes;
    std::uint64_t m_count = 0;
    std::map<Side, std::string> m_owners;
    // There is one session at most, and it ends with the connection that has called getService.
    std::string m_holder;
    std::string m_heldSession;
    BoundedMap<CallKey, Pending> m_pending{MOST_PENDING};
    BoundedMap<std::string, Role> m_roles{MOST};
    BoundedMap<std::string, std::optional<Process>> m_callers{MOST};
    BoundedMap<std::string, Session> m_sessions{MOST};
    BoundedMap<std::string, Transaction> m_transactions{MOST};
};

} // namespace monitor
