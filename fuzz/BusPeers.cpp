#include "BusPeers.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"

namespace DAX::Fuzz {
namespace {

namespace Manager = DAXIPC::DBUSLowLevel::DBUSNames::DBUSService::DBUSIServiceManager;

const std::chrono::milliseconds BOUND{5000}; // shorter than libFuzzer's own time-out

const char* pathOf(BusPath path) {
    switch (path) {
    case BusPath::SERVICE:
        return Manager::OBJECT_PATH;
    case BusPath::BELOW_SERVICE:
        return "/org/kovan/tv/dax/service/cservicemanager/child";
    case BusPath::BUS:
        return DBUS_PATH_DBUS;
    case BusPath::ROOT:
        break;
    }
    return "/";
}

const char* interfaceOf(BusInterface interface) {
    switch (interface) {
    case BusInterface::SERVICE:
        return Manager::INTERFACE_NAME;
    case BusInterface::NONE:
        return nullptr;
    case BusInterface::INTROSPECTABLE:
        return DBUS_INTERFACE_INTROSPECTABLE;
    case BusInterface::PROPERTIES:
        return DBUS_INTERFACE_PROPERTIES;
    case BusInterface::PEER:
        return DBUS_INTERFACE_PEER;
    case BusInterface::BUS:
        return DBUS_INTERFACE_DBUS;
    case BusInterface::OTHER:
    case BusInterface::OTHER_TOO:
        break;
    }
    return "org.kovan.fuzz";
}

int typeOf(BusMessageType type) {
    switch (type) {
    case BusMessageType::CALL:
        return DBUS_MESSAGE_TYPE_METHOD_CALL;
    case BusMessageType::SIGNAL:
        return DBUS_MESSAGE_TYPE_SIGNAL;
    case BusMessageType::ERROR:
        return DBUS_MESSAGE_TYPE_ERROR;
    case BusMessageType::RETURN:
        break;
    }
    return DBUS_MESSAGE_TYPE_METHOD_RETURN;
}

// Makes any bytes a text that a message may hold: up to the first zero, and in UTF-8.
std::string validText(const std::string& bytes) {
    const std::string text = bytes.c_str();
    return dbus_validate_utf8(text.c_str(), nullptr) ? text : "not in UTF-8";
}

void appendText(DBusMessage& message, const std::string& text) {
    const char* characters = text.c_str();
    dbus_message_append_args(&message, DBUS_TYPE_STRING, &characters, DBUS_TYPE_INVALID);
}

void appendDescriptor(DBusMessage& message) {
    const int descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
    dbus_message_append_args(&message, DBUS_TYPE_UNIX_FD, &descriptor, DBUS_TYPE_INVALID); // takes a copy
    close(descriptor);
}

// Arrays of other types than bytes. Code that takes every array for bytes would read past the end of these.
void appendOtherArray(DBusMessage& message, const std::string& body) {
    const std::size_t kind = body.empty() ? 0 : static_cast<unsigned char>(body[0]) % 4;
    const std::string text = validText(body.empty() ? "" : body.substr(1));
    const char* const texts[] = {text.c_str(), "", text.c_str()};
    const char* const* textsStart = texts;
    const dbus_uint64_t numbers[] = {~dbus_uint64_t(0), body.size(), 0};
    const dbus_uint64_t* numbersStart = numbers;
    if (kind == 0) {
        dbus_message_append_args(&message, DBUS_TYPE_ARRAY, DBUS_TYPE_STRING, &textsStart, 3, DBUS_TYPE_INVALID);
    } else if (kind == 1) {
        dbus_message_append_args(&message, DBUS_TYPE_ARRAY, DBUS_TYPE_UINT64, &numbersStart, 3, DBUS_TYPE_INVALID);
    } else {
        DBusMessageIter arguments, outer, inner;
        dbus_message_iter_init_append(&message, &arguments);
        dbus_message_iter_open_container(&arguments, DBUS_TYPE_ARRAY, kind == 2 ? "ay" : "v", &outer);
        dbus_message_iter_open_container(&outer, kind == 2 ? DBUS_TYPE_ARRAY : DBUS_TYPE_VARIANT, "y", &inner);
        const unsigned char byte = 1;
        dbus_message_iter_append_basic(&inner, DBUS_TYPE_BYTE, &byte);
        dbus_message_iter_close_container(&outer, &inner);
        dbus_message_iter_close_container(&arguments, &outer);
    }
}

// libdbus takes these two for calls of the peer interface, too, when they name no interface.
bool isPeerCall(const BusStep& step) {
    return step.interface == BusInterface::PEER ||
           (step.interface == BusInterface::NONE && (step.member == "Ping" || step.member == "GetMachineId"));
}

// Answers that the adapter gives to messages for its object. libdbus itself answers the others.
bool isForHandler(const BusStep& step) {
    return step.path == BusPath::SERVICE && !isPeerCall(step) &&
           !(step.interface == BusInterface::INTROSPECTABLE && step.member == "Introspect");
}

bool isForService(const BusStep& step) {
    return step.destination == BusDestination::SERVICE || step.destination == BusDestination::SERVICE_UNIQUE;
}

bool isEnvelope(DBusMessage& reply) {
    const std::vector<std::string> parts = Tests::byteArrays(reply);
    if (dbus_message_get_type(&reply) != DBUS_MESSAGE_TYPE_METHOD_RETURN || parts.size() != 3) {
        return false;
    }
    return parts[0] == "REPLY" || (parts[0] == "EXCEPTION" && (parts[1] == "Invalid arguments." ||
                                                               Tests::wireExceptionNames().count(parts[1]) != 0));
}

} // namespace

void fail(const std::string& what) {
    std::fprintf(stderr, "%s\n", what.c_str());
    std::abort();
}

Tests::RawMessage makeBusCall(const char* member, const char* interface, const std::string& argument) {
    Tests::RawMessage message(dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, interface, member));
    if (!argument.empty()) {
        appendText(*message, argument);
    }
    return message;
}

Tests::RawMessage callOrFail(Tests::RawPeer& peer, DBusMessage& message, const std::string& what) {
    Tests::RawMessage reply = peer.call(message, BOUND);
    if (!reply) {
        fail("no reply: " + what);
    }
    return reply;
}

BusPeers::Peer& BusPeers::peerAt(std::size_t slot) {
    if (!m_peers[slot]) {
        m_peers[slot] = std::make_unique<Peer>(slot);
    }
    return *m_peers[slot];
}

// Waits until the bus has passed on all that the peer has sent, and has delivered all that is for the peer.
void BusPeers::settle(Peer& peer) {
    if (peer.cutOff || peer.connection.call(*makeBusCall("GetId"), BOUND)) {
        return;
    }
    if (dbus_connection_get_is_connected(peer.connection.connection())) {
        fail("the bus does not answer");
    }
    peer.cutOff = true;
}

void BusPeers::play(const std::vector<BusStep>& steps) {
    for (const BusStep& step : steps) {
        if (m_last != nullptr && (step.leaves || m_last->slot != step.peer)) {
            settle(*m_last);
            m_last = nullptr;
        }
        if (!step.leaves) {
            send(step);
        } else {
            leave(step.peer);
        }
    }
    if (m_last != nullptr) {
        settle(*m_last);
    }
}

void BusPeers::send(const BusStep& step) {
    Peer& peer = peerAt(step.peer);
    if (peer.cutOff) {
        return;
    }
    const Tests::RawMessage message = makeMessage(step);
    const std::uint32_t serial = peer.connection.send(*message);
    peer.sent.emplace(serial, step);
    if (step.noReply || step.type != BusMessageType::CALL) {
        m_unwanted.emplace(peer.name, serial);
    }
    m_last = &peer;
}

Tests::RawMessage BusPeers::makeMessage(const BusStep& step) {
    Tests::RawMessage message(dbus_message_new(typeOf(step.type)));
    dbus_message_set_member(message.get(), step.member.c_str());
    dbus_message_set_path(message.get(), pathOf(step.path));
    const char* interface = interfaceOf(step.interface);
    if (interface == nullptr && step.type == BusMessageType::SIGNAL) {
        interface = Manager::INTERFACE_NAME; // a signal must have one, or the bus would end the connection
    }
    if (interface != nullptr) {
        dbus_message_set_interface(message.get(), interface);
    }
    if (step.type == BusMessageType::ERROR || step.type == BusMessageType::RETURN) {
        const auto serial = step.body.empty() ? 1 : static_cast<unsigned char>(step.body[0]) + 1;
        dbus_message_set_reply_serial(message.get(), static_cast<dbus_uint32_t>(serial));
        dbus_message_set_error_name(message.get(),
                                    step.type == BusMessageType::ERROR ? "org.kovan.fuzz.Error" : nullptr);
    }
    const std::string destination = destinationOf(step.destination);
    if (!destination.empty()) {
        dbus_message_set_destination(message.get(), destination.c_str());
    }
    dbus_message_set_no_reply(message.get(), step.noReply);
    dbus_message_set_auto_start(message.get(), !step.noAutoStart);
    appendBody(*message, step);
    return message;
}

void BusPeers::appendBody(DBusMessage& message, const BusStep& step) {
    switch (step.bodyKind) {
    case BusBody::BYTES:
        Tests::appendBytes(message, step.body);
        break;
    case BusBody::NOTHING:
        break;
    case BusBody::TEXT:
        appendText(message, validText(step.body));
        break;
    case BusBody::NAMES:
        appendNames(message, step.body);
        break;
    case BusBody::TWO_BYTE_ARRAYS:
        Tests::appendBytes(message, step.body.substr(0, step.body.size() / 2));
        Tests::appendBytes(message, step.body.substr(step.body.size() / 2));
        break;
    case BusBody::NUMBER: {
        const auto number = static_cast<dbus_uint32_t>(step.body.size());
        dbus_message_append_args(&message, DBUS_TYPE_UINT32, &number, DBUS_TYPE_INVALID);
        break;
    }
    case BusBody::DESCRIPTOR:
        appendDescriptor(message);
        break;
    case BusBody::OTHER_ARRAY:
        appendOtherArray(message, step.body);
        break;
    }
}

// One text argument for each of the first bytes: the arguments of a signal about names, or too few or too many of them.
void BusPeers::appendNames(DBusMessage& message, const std::string& choices) {
    for (const char choice : choices.substr(0, 4)) {
        appendText(message, nameOf(static_cast<unsigned char>(choice) % 8));
    }
}

std::string BusPeers::nameOf(std::size_t choice) const {
    if (choice < BUS_PEERS) {
        return m_peers[choice] ? m_peers[choice]->name : ":1.999999";
    }
    const std::array<std::string, 4> others{"", m_master.name(), m_service, Manager::CONNECTION_NAME};
    return others[choice - BUS_PEERS];
}

std::string BusPeers::destinationOf(BusDestination destination) const {
    switch (destination) {
    case BusDestination::SERVICE:
        return Manager::CONNECTION_NAME;
    case BusDestination::SERVICE_UNIQUE:
        return m_service;
    case BusDestination::NONE:
        return "";
    case BusDestination::BUS:
        return DBUS_SERVICE_DBUS;
    default:
        return nameOf(static_cast<std::size_t>(destination) - static_cast<std::size_t>(BusDestination::PEER_0));
    }
}

void BusPeers::checkReplies() {
    for (const auto& peer : m_peers) {
        if (peer) {
            settle(*peer);
            checkRepliesOf(*peer);
        }
    }
}

void BusPeers::checkRepliesOf(Peer& peer) {
    std::map<std::uint32_t, int> counts;
    for (const Tests::RawMessage& message : peer.connection.takeOthers()) {
        const auto sent = peer.sent.find(dbus_message_get_reply_serial(message.get()));
        if (sent == peer.sent.end() || dbus_message_get_type(message.get()) == DBUS_MESSAGE_TYPE_SIGNAL) {
            continue;
        }
        ++counts[sent->first];
        const BusStep& step = sent->second;
        if (step.type == BusMessageType::CALL && isForService(step) && isForHandler(step) && !isEnvelope(*message)) {
            fail("a reply to " + step.member + " that nobody can read");
        }
    }
    if (peer.cutOff) {
        return;
    }
    for (const auto& [serial, step] : peer.sent) {
        if (step.type == BusMessageType::CALL && isForService(step) && counts[serial] != (step.noReply ? 0 : 1)) {
            fail(std::to_string(counts[serial]) + " replies to " + step.member);
        }
    }
}

void BusPeers::leave(std::size_t slot) {
    const std::unique_ptr<Peer> peer = std::move(m_peers[slot]);
    if (!peer) {
        return;
    }
    peer->connection.disconnect();
    if (!m_master.waitForNameOwner(peer->name, false, BOUND)) {
        fail("the bus keeps the name " + peer->name);
    }
}

void BusPeers::leave() {
    m_last = nullptr;
    for (std::size_t slot = 0; slot < m_peers.size(); ++slot) {
        leave(slot);
    }
}

bool BusPeers::wantedNoReply(const std::string& sender, std::uint32_t serial) const {
    return m_unwanted.count({sender, serial}) != 0;
}

} // namespace DAX::Fuzz
