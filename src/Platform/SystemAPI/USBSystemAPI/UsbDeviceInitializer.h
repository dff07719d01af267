#pragma once

#include <list>

#include "Utility/Utils/RegisterableSingleton.h"
#include "Utility/Utils/SingletonsID.h"

namespace DAX::Platform {

// The registered singleton that starts the platform's USB library and stops it when it is destroyed. A program that
// lists USB devices must mark it as needed. Any thread may call it.
class UsbDeviceInitializer : public Common::Utils::RegisterableSingleton {
public:
    // For the register: its id, and the singletons that it needs while it exists.
    static Common::Utils::SingletonsID getID() { return Common::Utils::SINGLETON_USB_DEVICE_INITIALIZER; }
    static std::list<Common::Utils::SingletonsID> getRequirements() { return {}; }

    ~UsbDeviceInitializer() override;

    // Throws USBAPIException, with the library's result, when the library did not start.
    void throwIfUninitialized() const;

protected:
    UsbDeviceInitializer();

private:
    const int m_result;
};

} // namespace DAX::Platform
