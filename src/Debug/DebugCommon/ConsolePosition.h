#pragma once

#include <string>

namespace DAX::Common::Debug {

// The place of a program's console window on a developer's screen. Neither does anything in this daemon.
void SaveConsolePosition(const std::string& console);
void RestoreConsolePosition(const std::string& console);

} // namespace DAX::Common::Debug
