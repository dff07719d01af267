#pragma once

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "support/RawPeer.h"
#include "support/WaitUntil.h"
#include "support/WireGoldens.h"

namespace DAX::Tests {

// A service played by the test. It gets the name now, or as soon as the one before has left.
class PlayedService {
public:
    PlayedService() { m_peer.requestName(NAME, 0); }

    std::string name() const { return m_peer.name(); }
    void leave() { m_peer.disconnect(); }

    // Stays on the bus.
    void giveNameBack() {
        ASSERT_EQ(dbus_bus_release_name(m_peer.connection(), NAME, nullptr), DBUS_RELEASE_NAME_REPLY_RELEASED);
    }

    // The next call, which must be a call of the method.
    RawMessage next(const std::string& method) {
        RawMessage call;
        waitUntil([&] {
            dbus_connection_read_write(m_peer.connection(), 10);
            call.reset(dbus_connection_pop_message(m_peer.connection()));
            return call != nullptr && dbus_message_get_type(call.get()) == DBUS_MESSAGE_TYPE_METHOD_CALL;
        });
        if (call == nullptr || dbus_message_get_member(call.get()) != method) {
            throw std::runtime_error("no call of " + method);
        }
        return call;
    }

    void answer(DBusMessage& call, const std::string& archive) {
        const RawMessage reply(dbus_message_new_method_return(&call));
        appendBytes(*reply, "REPLY");
        appendBytes(*reply, dbus_message_get_member(&call));
        appendBytes(*reply, archive);
        m_peer.send(*reply);
    }

    void refuse(DBusMessage& call) {
        const RawMessage error(dbus_message_new_error(&call, DBUS_ERROR_ACCESS_DENIED, "Not for you."));
        m_peer.send(*error);
    }

    void giveLock(unsigned int id) { answer(*next("acquireExternalLock"), encode(id)); }

private:
    static constexpr char NAME[] = "org.kovan.tv.dax.service.servicemanager";

    RawPeer m_peer;
};

} // namespace DAX::Tests
