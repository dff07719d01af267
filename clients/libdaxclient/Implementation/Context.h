#pragma once

#include <functional>
#include <string>

#include <sys/types.h>
#include <unistd.h>

#include "Common/DBUSWrapper/ClientConnection.h"
#include "dax/client.h"

namespace dax::detail {

// What all objects of one client share.
struct Context {
    const std::string clientName;
    const DAX::Common::DBUSWrapper::ClientConnection connection;
    const std::function<void(LogLevel, const std::string&)> log;

    // The connections are those of this process. In a child of it, which may end by the way of all programs and destroy
    // the copies that it has of the objects, their ends must not be told to the service.
    const pid_t process = ::getpid();
    bool isOfAnotherProcess() const { return ::getpid() != process; }
};

} // namespace dax::detail
