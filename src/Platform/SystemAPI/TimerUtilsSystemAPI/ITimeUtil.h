#pragma once

#include <cstdint>
#include <string>

namespace DAX::Platform {

// The device's time, in seconds from 1970-01-01 00:00:00. Needs a BootClockInitializer. Any thread may ask. What is no
// date of a year up to 9999 throws std::out_of_range where a text of it is wanted.
class ITimeUtil {
public:
    // Local time.
    static std::uint64_t getCurrentLocalTime();

    // Local time as "2026-11-21T08:09:10"; its zone is not known, and not written.
    static std::string getCurrentLocalTimeToString();

    // UTC.
    static std::uint64_t getCurrentTime();
};

} // namespace DAX::Platform
