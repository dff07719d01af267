#pragma once

#include <functional>

#include <boost/optional.hpp>

#include "Common/Utils/ISimpleClock.h"
#include "Common/Utils/SoftWatchdog.h"

namespace DAX::Common::DBUSWrapper {

// Calls `function` under `guard` (which may be null) when `interval` seconds have passed since `last`, and remembers
// the time in `last`. True when the time has come.
bool checkTimeout(float& last, int interval, const boost::optional<std::function<void()>>& function,
                  Utils::ISimpleClock& clock, Utils::SoftWatchdog* guard);

} // namespace DAX::Common::DBUSWrapper
