#pragma once

#include <cstdint>
#include <string>

namespace DAX::Platform {

// The device's time, in seconds since 1970-01-01 00:00:00. A BootClockInitializer must exist. Any thread may call.
class ITimeUtil {
public:
    // Local time.
    static std::uint64_t getCurrentLocalTime();

    // Local time in the form "2026-11-21T08:09:10", without the zone, which is not known. Throws std::out_of_range for
    // a year after 9999.
    static std::string getCurrentLocalTimeToString();

    // UTC. Throws std::out_of_range when it, or the local time, is in a year after 9999.
    static std::uint64_t getCurrentTime();
};

} // namespace DAX::Platform
