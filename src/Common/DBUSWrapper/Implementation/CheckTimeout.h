#pragma once

#include <functional>

#include <boost/optional.hpp>

#include "Common/Utils/ISimpleClock.h"
#include "Common/Utils/SoftWatchdog.h"

namespace DAX::Common::DBUSWrapper {

// When `interval` seconds have passed since `last`: calls `function`, if there is one, while `guard` (which may be
// null) is armed, stores the time in `last` and returns true. Otherwise returns false. Throws what `function` throws.
bool checkTimeout(float& last, int interval, const boost::optional<std::function<void()>>& function,
                  Utils::ISimpleClock& clock, Utils::SoftWatchdog* guard);

} // namespace DAX::Common::DBUSWrapper
