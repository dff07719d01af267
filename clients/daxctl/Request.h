#pragma once

#include <string>

#include "dax/client.h"

namespace daxctl {

// Who asks for the service, and for what.
struct Request {
    std::string clientName = "daxctl";
    int priority = 4;
    int transactionType = 2;
};

// A connection to the daemon. Throws dax::Unreachable when there is no bus.
inline dax::Client connectToDaemon(const std::string& clientName = Request().clientName) {
    return dax::Client(clientName);
}

} // namespace daxctl
