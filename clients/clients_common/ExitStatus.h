#pragma once

namespace clients_common {

// The exit statuses that scripts can rely on. A command that runs another program may end with that program's status.
enum ExitStatus : int {
    EXIT_DONE = 0,
    EXIT_REFUSED = 1, // the request was refused or failed, or its object does not exist
    EXIT_USAGE = 2,   // the command line was wrong
};

} // namespace clients_common
