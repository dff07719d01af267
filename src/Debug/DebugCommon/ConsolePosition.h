#pragma once

#include <string>

namespace DAX::Common::Debug {

// Save and restore the position of a program's console window on a developer's screen. Both do nothing in this daemon.
void SaveConsolePosition(const std::string& console);
void RestoreConsolePosition(const std::string& console);

} // namespace DAX::Common::Debug
