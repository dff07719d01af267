#pragma once

#include "clients_common/CommandLine.h"
#include "daxctl/Request.h"

namespace daxctl {

// --name and --priority, by which a client introduces itself.
inline void addRequestOptions(clients_common::Command& command, Request& request) {
    command.add("--name", request.clientName, "The name under which the service is asked for").showsDefault();
    command.add("--priority", request.priority, "The rank of this client; a higher one takes the service over")
        .showsDefault();
}

} // namespace daxctl
