#pragma once

#include <memory>

struct DBusConnection;

namespace DAX::Common::DBUSWrapper {

struct CloseConnection {
    void operator()(DBusConnection* connection) const;
};

// A private connection; it is closed and released with the handle.
using DBUSConnectionHandle = std::unique_ptr<DBusConnection, CloseConnection>;

} // namespace DAX::Common::DBUSWrapper
