#include "Common/Utils/Implementation/SimpleClock.h"

namespace DAX::Common::Utils {

float SimpleClock::getCurrentTime() {
    const boost::chrono::nanoseconds elapsed = boost::chrono::steady_clock::now() - m_start;
    return static_cast<float>(elapsed.count()) / 1e9f;
}

std::unique_ptr<ISimpleClock> ISimpleClock::createClock() {
    return std::make_unique<SimpleClock>();
}

} // namespace DAX::Common::Utils
