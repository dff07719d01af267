#include "Common/DBUSWrapper/Implementation/CheckTimeout.h"

namespace DAX::Common::DBUSWrapper {

bool checkTimeout(float& last, int interval, const boost::optional<std::function<void()>>& function,
                  Utils::ISimpleClock& clock, Utils::SoftWatchdog* guard) {
    const float now = clock.getCurrentTime();
    if (static_cast<float>(interval) > now - last) {
        return false;
    }
    // The next interval counts from now, not from when this one was due.
    last = now;
    if (guard != nullptr) {
        guard->arm();
    }
    if (function) {
        (*function)();
    }
    if (guard != nullptr) {
        guard->disarm();
    }
    return true;
}

} // namespace DAX::Common::DBUSWrapper
