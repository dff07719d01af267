#pragma once

#include <string>

namespace Roundtrip {

// The yardstick: the least that a libdbus program can do to serve messages of the same shape, one `ay` in and three
// `ay` out. Takes the name on the system bus and answers every call to `objectPath` with a fixed result until the bus
// ends.
int runBareServer(const std::string& connectionName, const std::string& objectPath);

} // namespace Roundtrip
