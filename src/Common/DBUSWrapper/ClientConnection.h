#pragma once

#include <functional>
#include <memory>
#include <string>

#include <boost/exception/info.hpp>

#include "Common/DBUSWrapper/IDBUSProxy.h"

namespace DAX::Common::DBUSWrapper {

// The bus's name for a failure, such as "org.freedesktop.DBus.Error.AccessDenied".
struct tag_errinfo_bus_error {};
using errinfo_bus_error = boost::error_info<tag_errinfo_bus_error, std::string>;

// How a program that is only a client connects to a bus.
struct ClientConnection {
    std::string address;            // as D-Bus writes addresses; without one it is the system bus
    unsigned int timeoutMs = 60000; // for the connecting, and for each call

    // Whether the bus may start the remote side for a call. Each call asks, on its thread. Empty: it always may.
    std::function<bool()> mayStart{};
};

// A factory of proxies over such connections. It differs from the default one in three things: `type`,
// `activationTimeoutMs` and `callTimeoutMs` of its create() have no effect; connecting to a bus that does not answer
// ends after the time-out; the exceptions of the factory and of its proxies carry errinfo_bus_error where the bus
// library gave a name, which is DBUS_ERROR_TIMEOUT exactly when there was no reply in time. Any thread.
std::unique_ptr<IDBUSProxy::IDBUSProxyFactory> createClientProxyFactory(ClientConnection connection);

} // namespace DAX::Common::DBUSWrapper
