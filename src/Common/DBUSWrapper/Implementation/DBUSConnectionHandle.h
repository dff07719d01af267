#pragma once

#include <memory>

struct DBusConnection;

namespace DAX::Common::DBUSWrapper {

struct CloseConnection {
    void operator()(DBusConnection* connection) const;
};

// A private connection; the handle closes and releases it.
using DBUSConnectionHandle = std::unique_ptr<DBusConnection, CloseConnection>;

} // namespace DAX::Common::DBUSWrapper
