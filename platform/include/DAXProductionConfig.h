#pragma once

namespace DAX {
namespace Common {
namespace Debug {

// True on production software. Fixed for the life of the process; any thread may ask.
bool isProduction();

} // namespace Debug
} // namespace Common
} // namespace DAX
