#include "Debug/DebugCommon/ConsolePosition.h"

namespace DAX::Common::Debug {

void SaveConsolePosition(const std::string&) {}

void RestoreConsolePosition(const std::string&) {}

} // namespace DAX::Common::Debug
