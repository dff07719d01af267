#pragma once

#include <functional>
#include <string>

#include "PowerRecords.h"

namespace KovanHost {

// The file of the simulated device's power, run/kovan/power.ini under the root, which several processes read and write.
// While it is absent, everything is 0. Any thread may call.

std::string powerPath();

// Reads the file. Throws std::runtime_error with the path and the reason when it cannot be read or makes no sense.
Power loadPower();

// The same, but while the file is bad, what this process knew before. That is reported on standard error with the path
// and the reason, and not again until the file is good or bad for another reason.
Power knownPower();

// Changes what is known and writes it; makes the folder. Changes come one after another, whichever process makes them.
// Readers see the file as it was before or after, even if the writer dies. Throws std::system_error when the file
// cannot be written.
void changePower(const std::function<void(Power&)>& change);

} // namespace KovanHost
