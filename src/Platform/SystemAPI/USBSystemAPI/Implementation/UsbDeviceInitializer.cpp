#include "Platform/SystemAPI/USBSystemAPI/UsbDeviceInitializer.h"

#include <usb_device.h>

#include "Platform/SystemAPI/USBSystemAPI/USBAPIException.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Platform {

UsbDeviceInitializer::UsbDeviceInitializer() : m_result(usb_device_init()) {}

UsbDeviceInitializer::~UsbDeviceInitializer() {
    usb_device_fini();
}

void UsbDeviceInitializer::throwIfUninitialized() const {
    if (m_result != 0) {
        DAX_THROW(USBAPIException(), Common::Utils::errinfo_description("usb_device_init() failed")
                                         << Common::Utils::errinfo_errorcode(m_result));
    }
}

} // namespace DAX::Platform
