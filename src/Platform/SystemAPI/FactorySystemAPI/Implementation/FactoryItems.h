#pragma once

#include <system_info.h>

namespace DAX::Platform {

// A value of the factory menu. When it cannot be read, its default, with a log line. An assertion fails for a key that
// has no default.
int getIntFromFactory(system_info_key_e key);

} // namespace DAX::Platform
