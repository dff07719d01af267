#include "Platform/OperatingSystem/OSProcess.h"

#include <unistd.h>

namespace DAX::Platform {

std::pair<bool, int> wasAnyKeyPressed() {
    return {false, 0};
}

void callExit() {
    _exit(143);
}

} // namespace DAX::Platform
