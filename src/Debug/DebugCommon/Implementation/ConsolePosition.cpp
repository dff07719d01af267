#include "Debug/DebugCommon/ConsolePosition.h"

namespace DAX {
namespace Common {
namespace Debug {

void SaveConsolePosition(const std::string&) {}

void RestoreConsolePosition(const std::string&) {}

} // namespace Debug
} // namespace Common
} // namespace DAX
