#pragma once

#include <functional>

#include "UsbSticks.h"

namespace KovanHost {

// The file of the simulated device's USB sticks, run/kovan/usb.ini under the root, which several processes read and
// write. While it is absent, there are none. Any thread may call.

// std::runtime_error with the path and the reason when the file cannot be read or makes no sense.
UsbSticks loadUsbSticks();

// The same, but while the file is bad, what this process knew before. That is told on standard error with the path and
// the reason, and not again before the file is good or bad for another reason.
UsbSticks knownUsbSticks();

// Changes the list and writes it, with the folder. One change after another, whichever process makes it; readers see
// the file as it was before or after, even if the writer dies. A bad file stays, and raises what loadUsbSticks() does.
// std::system_error when it cannot be written.
void changeUsbSticks(const std::function<void(UsbSticks&)>& change);

} // namespace KovanHost
