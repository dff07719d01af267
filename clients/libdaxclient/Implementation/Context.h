#pragma once

#include <functional>
#include <string>

#include "Common/DBUSWrapper/ClientConnection.h"
#include "dax/client.h"

namespace dax::detail {

// What all objects of one client share.
struct Context {
    const std::string clientName;
    const DAX::Common::DBUSWrapper::ClientConnection connection;
    const std::function<void(LogLevel, const std::string&)> log;
};

} // namespace dax::detail
