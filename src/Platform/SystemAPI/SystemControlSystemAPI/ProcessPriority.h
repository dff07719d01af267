#pragma once

namespace DAX::Platform {

// Any other value stands for BACKGROUND.
enum class ProcessPriority : int { BACKGROUND = 0, FOREGROUND = 1 };

} // namespace DAX::Platform
