#pragma once

#include <system_info.h>

namespace DAX::Platform {

// A value of the factory menu; its default, with a log line, when it cannot be read. An assertion fails for a key that
// has no default.
int getIntFromFactory(system_info_key_e key);

} // namespace DAX::Platform
