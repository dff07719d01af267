#include "AdapterClock.h"

#include <atomic>
#include <memory>
#include <utility>

#include "Common/Utils/ISimpleClock.h"

namespace DAX::Tests {
namespace {

using Common::Utils::ISimpleClock;

std::atomic<float> clockSpeed{1};

class FastClock : public ISimpleClock {
public:
    FastClock(std::unique_ptr<ISimpleClock> clock, float speed) : m_clock(std::move(clock)), m_speed(speed) {}
    float getCurrentTime() override { return m_clock->getCurrentTime() * m_speed; }

private:
    std::unique_ptr<ISimpleClock> m_clock;
    float m_speed;
};

} // namespace

void setClockSpeed(float speed) {
    clockSpeed = speed;
}

// The linker replaces ISimpleClock::createClock() by the second function.
std::unique_ptr<ISimpleClock> realCreateClock() __asm__("__real__ZN3DAX6Common5Utils12ISimpleClock11createClockEv");
std::unique_ptr<ISimpleClock> createAnyClock() __asm__("__wrap__ZN3DAX6Common5Utils12ISimpleClock11createClockEv");
std::unique_ptr<ISimpleClock> createAnyClock() {
    return std::make_unique<FastClock>(realCreateClock(), clockSpeed);
}

} // namespace DAX::Tests
