#include "monitor/Conversation.h"

#include <algorithm>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/CoreMethods.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ServiceMethods.h"
#include "Utility/Utils/InnermostText.h"

namespace monitor {

namespace {

using namespace DAX::DAXIPC::DBUSLowLevel;
namespace ServiceNames = DBUSNames::DBUSService::DBUSIServiceManager;
namespace CoreNames = DBUSNames::DBUSCore::DBUSICore;

const char* const BUS = "org.freedesktop.DBus";
const char* const EXCEPTION = "EXCEPTION";

// Of one archive.
const DecodingLimits LIMITS{200, 16 * 1024};

// Ids and names come from clients, who can make them as long as a message. What is remembered of each is enough to tell
// them apart and to show them.
const std::size_t LONGEST_NAME = 256;

// Roughly, in bytes of memory.
std::size_t sizeOf(const std::vector<DecodedValue>& values) {
    std::size_t size = 0;
    for (const DecodedValue& value : values) {
        const auto* text = std::get_if<std::string>(&value.value);
        size += sizeof value + (text != nullptr ? text->size() : 0) + sizeOf(value.children);
    }
    return size;
}

std::string textOf(const DecodedArchive& archive, const char* field) {
    for (const DecodedValue& value : archive.values) {
        if (value.name == field) {
            const auto* text = std::get_if<std::string>(&value.value);
            return text != nullptr ? *text : std::string();
        }
    }
    return {};
}

// The same of an id or a name.
std::string nameIn(const DecodedArchive& archive, const char* field) {
    return textOf(archive, field).substr(0, LONGEST_NAME);
}

bool is(const CallEvent& call, Side side, const char* method) {
    return call.side == side && call.method == method;
}

// The methods that refuse by an empty bus name.
bool grants(const CallEvent& call) {
    return is(call, Side::SERVICE, ServiceMethods::getService.name) ||
           is(call, Side::SERVICE, ServiceMethods::startNewTransaction.name) ||
           is(call, Side::CORE, CoreMethods::createTransaction.name);
}

std::string bytesAt(const BusMessage& message, std::size_t index) {
    return index < message.arguments.size() && message.arguments[index].type == 'b' ? message.arguments[index].text
                                                                                    : std::string();
}

std::string textAt(const BusMessage& message, std::size_t index) {
    return index < message.arguments.size() && message.arguments[index].type == 's' ? message.arguments[index].text
                                                                                    : std::string();
}

} // namespace

void Conversation::take(const BusMessage& message) {
    switch (message.type) {
    case BusMessage::Type::CALL:
        return takeCall(message);
    case BusMessage::Type::REPLY:
    case BusMessage::Type::ERROR:
        return takeAnswer(message);
    case BusMessage::Type::SIGNAL:
        if (message.sender == BUS && message.member == "NameOwnerChanged") {
            takeNameOwnerChanged(message);
        }
        return;
    case BusMessage::Type::OTHER:
        return;
    }
}

std::optional<Side> Conversation::sideOf(const BusMessage& message) const {
    if (message.destination == ServiceNames::CONNECTION_NAME || message.path == ServiceNames::OBJECT_PATH) {
        return Side::SERVICE;
    }
    if (message.destination == CoreNames::CONNECTION_NAME() || message.path == CoreNames::OBJECT_PATH()) {
        return Side::CORE;
    }
    for (const auto& [side, owner] : m_owners) {
        if (!owner.empty() && message.destination == owner) {
            return side;
        }
    }
    return std::nullopt;
}

void Conversation::takeCall(const BusMessage& message) {
    const auto side = sideOf(message);
    if (!side) {
        return;
    }
    CallEvent call = describeCall(message, *side);
    learnFromCall(call);
    m_sink.onCall(call);
    if (!call.expectsAnswer) {
        return;
    }
    // With the nodes of the map, and the strings that are no arguments.
    const std::size_t size = 2 * sizeof(Pending) + sizeOf(call.arguments.values);
    m_pending.set({message.sender, message.serial}, {std::move(call), answererOf(message, *side)}, size);
}

std::string Conversation::answererOf(const BusMessage& call, Side side) const {
    if (call.destination.rfind(':', 0) == 0) {
        return call.destination;
    }
    const std::string name = side == Side::SERVICE ? ServiceNames::CONNECTION_NAME : CoreNames::CONNECTION_NAME();
    const auto owner = m_owners.find(side);
    return call.destination == name && owner != m_owners.end() ? owner->second : std::string();
}

CallEvent Conversation::describeCall(const BusMessage& message, Side side) {
    CallEvent call;
    call.time = message.time;
    call.number = ++m_count;
    call.side = side;
    call.method = message.member;
    call.expectsAnswer = message.expectsReply;
    call.caller = callerOf(message.sender);
    if (const Role* role = m_roles.find(message.sender)) {
        call.caller.client = role->client;
        call.session = role->session;
        call.transaction = role->transaction;
    }
    const MethodDescription* method = findMethod(side, message.member);
    call.isKnown = method != nullptr;
    if (call.isKnown) {
        const std::string bytes = bytesAt(message, 0);
        call.arguments = decodeArchive(method->request, bytes, LIMITS);
        call.unreadBytes = hasUnreadBytes(call.arguments, bytes) ? bytes.size() - call.arguments.end : 0;
    }
    return call;
}

Caller Conversation::callerOf(const std::string& connection) {
    auto* known = m_callers.find(connection);
    if (known == nullptr) {
        known = &m_callers.set(connection, m_processes.processOf(connection));
    }
    return {connection, *known, {}};
}

// What a call says of its caller before it is answered.
void Conversation::learnFromCall(CallEvent& call) {
    const auto nameClient = [&call] {
        const std::string name = nameIn(call.arguments, "clientName");
        call.caller.client = name.empty() ? call.caller.client : name;
    };
    if (is(call, Side::SERVICE, ServiceMethods::getService.name)) {
        nameClient();
        call.session = nameIn(call.arguments, "sessionId");
    } else if (is(call, Side::SERVICE, ServiceMethods::acquireExternalLock.name) ||
               is(call, Side::SERVICE, ServiceMethods::releaseExternalLock.name)) {
        nameClient();
    } else if (is(call, Side::SERVICE, ServiceMethods::startNewTransaction.name)) {
        call.transaction = nameIn(call.arguments, "transactionId");
    } else if (is(call, Side::CORE, CoreMethods::createTransaction.name)) {
        call.transaction = nameIn(call.arguments, "proxyId");
    } else if (is(call, Side::CORE, CoreMethods::helloMessage.name)) {
        call.transaction = nameIn(call.arguments, "proxyId");
    } else if (is(call, Side::SERVICE, ServiceMethods::helloMessage.name)) {
        const std::string id = nameIn(call.arguments, "id");
        if (const Session* session = m_sessions.find(id)) {
            call.session = id;
            call.caller.client = session->client;
        } else if (const Transaction* transaction = m_transactions.find(id)) {
            call.transaction = id;
            call.session = transaction->session;
            call.caller.client = transaction->client;
        }
    }
}

void Conversation::learnFromAnswer(const CallEvent& call, const AnswerEvent& answer) {
    if (answer.outcome != Outcome::DONE) {
        return;
    }
    Role role;
    if (const Role* known = m_roles.find(call.caller.connection)) {
        role = *known;
    }
    const bool hasNewName = role.client != call.caller.client;
    role.client = call.caller.client;
    if (is(call, Side::SERVICE, ServiceMethods::getService.name)) {
        m_sessions.set(call.session, {call.caller.client});
        role.session = call.session;
        m_holder = call.caller.connection;
        m_heldSession = call.session;
    } else if (is(call, Side::SERVICE, ServiceMethods::startNewTransaction.name)) {
        m_transactions.set(call.transaction, {call.session, call.caller.client});
        return;
    } else if (is(call, Side::SERVICE, ServiceMethods::invalidate.name)) {
        forgetHolder();
        return;
    } else if (is(call, Side::SERVICE, ServiceMethods::helloMessage.name)) {
        role.session = call.session;
        role.transaction = call.transaction;
    } else if (is(call, Side::CORE, CoreMethods::helloMessage.name)) {
        role.transaction = call.transaction;
    } else if (!hasNewName) {
        return;
    }
    m_roles.set(call.caller.connection, role);
}

// A bus delivers no answer of a connection that was not asked, but a monitor sees it all the same.
bool Conversation::isFromAnother(const BusMessage& answer, const Pending& pending) {
    return !pending.answerer.empty() && answer.sender != pending.answerer && answer.sender != BUS;
}

void Conversation::takeAnswer(const BusMessage& message) {
    const CallKey key{message.destination, message.replySerial};
    const Pending* pending = m_pending.find(key);
    if (pending == nullptr || isFromAnother(message, *pending)) {
        return;
    }
    const CallEvent& call = pending->call;
    const AnswerEvent answer = describeAnswer(message, call);
    learnFromAnswer(call, answer);
    m_sink.onAnswer(call, answer);
    m_pending.erase(key);
}

void Conversation::forgetHolder() {
    m_holder.clear();
    m_heldSession.clear();
}

AnswerEvent Conversation::describeAnswer(const BusMessage& message, const CallEvent& call) {
    AnswerEvent answer;
    answer.time = message.time;
    answer.latency = std::max<std::int64_t>(message.time - call.time, 0);
    if (message.type == BusMessage::Type::ERROR) {
        answer.outcome = Outcome::FAILED;
        answer.isBusError = true;
        answer.failure = message.error;
        answer.text = textAt(message, 0);
        return answer;
    }
    const std::string archive = bytesAt(message, 2);
    if (bytesAt(message, 0) == EXCEPTION) {
        const DecodedArchive exception = decodeArchive(exceptionArchive(), archive, LIMITS);
        answer.outcome = Outcome::FAILED;
        answer.failure = bytesAt(message, 1);
        answer.supportCode = textOf(exception, "supportCode");
        answer.text = exception.breakage ? archive.substr(0, 200)
                                         : DAX::Common::Utils::get_innermost_text(textOf(exception, "diagnostic"));
        return answer;
    }
    const MethodDescription* method = findMethod(call.side, call.method);
    if (method == nullptr) {
        return answer;
    }
    answer.hasArchive = method->reply.exists && !archive.empty();
    if (answer.hasArchive) {
        answer.result = decodeArchive(method->reply, archive, LIMITS);
    }
    if (answer.result.breakage) {
        answer.outcome = Outcome::BROKEN;
    } else if (grants(call) && textOf(answer.result, "busName").empty()) {
        answer.outcome = Outcome::REFUSED;
    }
    return answer;
}

void Conversation::takeNameOwnerChanged(const BusMessage& message) {
    OwnerEvent change;
    change.time = message.time;
    change.name = textAt(message, 0);
    change.from = textAt(message, 1);
    change.to = textAt(message, 2);
    if (change.name == ServiceNames::CONNECTION_NAME) {
        change.side = Side::SERVICE;
    } else if (change.name == CoreNames::CONNECTION_NAME()) {
        change.side = Side::CORE;
    }
    if (change.side) {
        m_owners[*change.side] = change.to;
        if (change.side == Side::SERVICE) {
            forgetHolder(); // a service that ends takes the session with it
        }
        m_sink.onOwner(change);
        return;
    }
    if (!change.to.empty() || m_callers.find(change.name) == nullptr) {
        return;
    }
    change.caller = callerOf(change.name);
    if (const Role* role = m_roles.find(change.name)) {
        change.caller.client = role->client;
    }
    if (change.name == m_holder) {
        change.session = m_heldSession;
        forgetHolder();
    }
    m_sink.onOwner(change);
    m_roles.erase(change.name);
    m_callers.erase(change.name);
}

} // namespace monitor
