#include "system/support/ProcessMemory.h"

#include <fstream>
#include <string>

namespace DAX::Tests {

namespace {

std::string fileOf(pid_t process, const char* name) {
    return "/proc/" + std::to_string(process) + "/" + name;
}

long statusOf(pid_t process, const std::string& figure) {
    std::ifstream status(fileOf(process, "status"));
    for (std::string line; std::getline(status, line);) {
        if (line.compare(0, figure.size(), figure) == 0) {
            return std::stol(line.substr(figure.size()));
        }
    }
    return 0;
}

} // namespace

long residentKilobytes(pid_t process) {
    return statusOf(process, "VmRSS:");
}

long peakKilobytes(pid_t process) {
    return statusOf(process, "VmHWM:");
}

bool forgetPeak(pid_t process) {
    std::ofstream clear(fileOf(process, "clear_refs"));
    clear << "5" << std::flush;
    return clear.good();
}

} // namespace DAX::Tests
