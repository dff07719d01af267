#pragma once

#include <string>

namespace KovanHost {

// The current time in the form "2026-11-21T09:30:00.125Z".
std::string utcTimestamp();

} // namespace KovanHost
