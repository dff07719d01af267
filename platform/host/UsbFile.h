#pragma once

#include <functional>

#include "UsbSticks.h"

namespace KovanHost {

// The file of the simulated device's USB sticks, run/kovan/usb.ini under the root, which several processes read and
// write. Without the file there are no sticks. Any thread may call.

// Reads the file. Throws std::runtime_error with the path and the reason when it cannot be read or makes no sense.
UsbSticks loadUsbSticks();

// The same, but while the file is bad, what this process knew before. That is reported on standard error with the path
// and the reason, and not again until the file is good or bad for another reason.
UsbSticks knownUsbSticks();

// Changes the list and writes it; makes the folder. Changes come one after another, whichever process makes them.
// Readers see the file as it was before or after, even if the writer dies. A bad file stays as it is, and this throws
// what loadUsbSticks() throws. Throws std::system_error when the file cannot be written.
void changeUsbSticks(const std::function<void(UsbSticks&)>& change);

} // namespace KovanHost
