#pragma once

#include <string>

namespace Roundtrip {

// The yardstick: the least that a libdbus program can do to serve the same message shape, one `ay` in and three `ay`
// out. Takes the name on the system bus and answers every call of `objectPath` with a fixed result until the bus goes.
int runBareServer(const std::string& connectionName, const std::string& objectPath);

} // namespace Roundtrip
