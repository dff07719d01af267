#pragma once

namespace Roundtrip {

// What one call costs a client itself, in microseconds of its thread's CPU time: by the proxies, and by libdaxclient,
// which stands on them. The medians over blocks of calls, which take turns; the ratio is the median of the ratios of
// neighbours.
struct LibraryCost {
    double byProxies = 0;
    double byLibrary = 0;
    double ratio = 0;
};

// Asks the daemon on the system bus who holds the service.
LibraryCost measureLibraryCost(int calls, int blockLength);

} // namespace Roundtrip
