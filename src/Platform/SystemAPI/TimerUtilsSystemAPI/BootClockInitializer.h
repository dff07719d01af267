#pragma once

#include <list>

#include "Utility/Utils/RegisterableSingleton.h"
#include "Utility/Utils/SingletonsID.h"

namespace DAX::Platform {

// The registered singleton that starts the device's time library and stops it when it is destroyed. It requires the
// main loop, which the library may use. If the library does not start, that is only logged.
class BootClockInitializer : public Common::Utils::RegisterableSingleton {
public:
    // For the register: its id, and the singletons that it needs while it exists.
    static Common::Utils::SingletonsID getID() { return Common::Utils::SINGLETON_BOOTCLOCK_INITIALIZER; }
    static std::list<Common::Utils::SingletonsID> getRequirements() { return {Common::Utils::G_MAIN_LOOP}; }

    ~BootClockInitializer() override;

    // Always 0: nothing sets them.
    int getDAXTimerPriority() const { return m_priority; }
    int getWeekFlag() const { return m_weekFlag; }

protected:
    BootClockInitializer();

private:
    int m_priority = 0;
    int m_weekFlag = 0;
};

} // namespace DAX::Platform
