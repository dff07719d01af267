#pragma once

#include <functional>
#include <string>

#include "PowerRecords.h"

namespace KovanHost {

// The file of the simulated device's power, run/kovan/power.ini under the root, which several processes read and write.
// While it is absent, everything is 0. Any thread may call.

std::string powerPath();

// std::runtime_error with the path and the reason when the file cannot be read or makes no sense.
Power loadPower();

// The same, but while the file is bad, what this process knew before. That is told on standard error with the path and
// the reason, and not again before the file is good or bad for another reason.
Power knownPower();

// Changes what is known and writes it, with the folder. One change after another, whichever process makes it; readers
// see the file as it was before or after, even if the writer dies. std::system_error when it cannot be written.
void changePower(const std::function<void(Power&)>& change);

} // namespace KovanHost
