#pragma once

namespace clients_common {

// What scripts can rely on. A command that runs another program may end with that program's own status.
enum ExitStatus : int {
    EXIT_DONE = 0,
    EXIT_REFUSED = 1, // what was asked for was refused, or is not there
    EXIT_USAGE = 2,   // it was asked for in the wrong way
};

} // namespace clients_common
