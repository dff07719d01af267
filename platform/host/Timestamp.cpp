#include "Timestamp.h"

#include <cstdio>
#include <ctime>

namespace KovanHost {

std::string utcTimestamp() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm parts{};
    gmtime_r(&now.tv_sec, &parts);
    char text[40];
    const std::size_t length = std::strftime(text, sizeof(text), "%FT%T", &parts);
    std::snprintf(text + length, sizeof(text) - length, ".%03dZ", static_cast<int>(now.tv_nsec / 1000000));
    return text;
}

} // namespace KovanHost
