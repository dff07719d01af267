#pragma once

#include <memory>

namespace DAX::Common::Utils {

// Measures elapsed time. Any thread may read a clock.
class ISimpleClock {
public:
    // Seconds since the clock was made.
    virtual float getCurrentTime() = 0;
    virtual ~ISimpleClock() = default;

    // A clock over the steady clock of the system.
    static std::unique_ptr<ISimpleClock> createClock();
};

} // namespace DAX::Common::Utils
