#include "roundtrip/Client.h"

#include <chrono>
#include <stdexcept>

#include "roundtrip/ProcessFigures.h"

namespace Roundtrip {

using DAX::Tests::RawMessage;

RawMessage makeCall(const Address& address) {
    RawMessage message(dbus_message_new_method_call(address.connectionName.c_str(), address.objectPath.c_str(),
                                                    address.interfaceName.c_str(), "getServiceOwner"));
    DAX::Tests::appendBytes(*message, "22 serialization::archive 19");
    return message;
}

Client::Client(const Address& address) : m_address(address), m_message(makeCall(address)) {}

double Client::call() {
    using Clock = std::chrono::steady_clock;
    DBusConnection* const connection = m_peer.connection();
    const Clock::time_point begin = Clock::now();
    dbus_connection_send(connection, m_message.get(), nullptr);
    RawMessage reply;
    do {
        if (!dbus_connection_read_write(connection, -1)) {
            throw std::runtime_error("the bus has gone");
        }
        do {
            reply.reset(dbus_connection_pop_message(connection));
        } while (reply != nullptr && dbus_message_get_reply_serial(reply.get()) == 0);
    } while (reply == nullptr);
    const std::chrono::duration<double, std::micro> elapsed = Clock::now() - begin;
    if (dbus_message_get_type(reply.get()) != DBUS_MESSAGE_TYPE_METHOD_RETURN ||
        DAX::Tests::byteArrays(*reply).front() != "REPLY") {
        throw std::runtime_error("no normal reply from " + m_address.connectionName);
    }
    return elapsed.count();
}

pid_t Client::serverPid() {
    call();
    RawMessage question(dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS,
                                                     "GetConnectionUnixProcessID"));
    const char* name = m_address.connectionName.c_str();
    dbus_message_append_args(question.get(), DBUS_TYPE_STRING, &name, DBUS_TYPE_INVALID);
    const RawMessage answer = m_peer.call(*question);
    dbus_uint32_t pid = 0;
    dbus_message_get_args(answer.get(), nullptr, DBUS_TYPE_UINT32, &pid, DBUS_TYPE_INVALID);
    return static_cast<pid_t>(pid);
}

void Client::endServer() {
    endProcess(serverPid());
    if (!m_peer.waitForNameOwner(m_address.connectionName, false)) {
        throw std::runtime_error(m_address.connectionName + " does not become free");
    }
}

} // namespace Roundtrip
