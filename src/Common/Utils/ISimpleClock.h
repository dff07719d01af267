#pragma once

#include <memory>

namespace DAX::Common::Utils {

// Measures the time since it was made, on the steady clock. Any thread may read it.
class ISimpleClock {
public:
    // Seconds since the clock was made, 0 or greater. A float: after a day it is exact to about 10 ms.
    virtual float getCurrentTime() = 0;
    virtual ~ISimpleClock() = default;

    // A new clock, which starts at 0.
    static std::unique_ptr<ISimpleClock> createClock();
};

} // namespace DAX::Common::Utils
