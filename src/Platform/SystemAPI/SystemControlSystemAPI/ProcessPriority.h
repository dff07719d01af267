#pragma once

namespace DAX::Platform {

// How readily the system gives a process time: niceness 0 for FOREGROUND, 19 for BACKGROUND and any other value.
enum class ProcessPriority : int { BACKGROUND = 0, FOREGROUND = 1 };

} // namespace DAX::Platform
