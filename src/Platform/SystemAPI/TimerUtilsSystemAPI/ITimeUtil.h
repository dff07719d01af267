#pragma once

#include <cstdint>

namespace DAX {
namespace Platform {

// The device's time. Any thread may ask.
class ITimeUtil {
public:
    // Seconds from 1970-01-01 00:00:00 local time.
    static std::uint64_t getCurrentLocalTime();
};

} // namespace Platform
} // namespace DAX
