#include <cstdio>

#include <time.h>

#include "Common/Logging/Logging.h"

namespace DAX::Common::Logging {
namespace {

// Gives the console time to take the line before the process ends.
void letConsoleCatchUp() {
    const timespec pause = {0, 100'000'000}; // 100 ms
    nanosleep(&pause, nullptr);
}

} // namespace

void LoggingClass::printDirect(const char* tag, Level level, char* text) {
    char threadId[64];
    getThreadId(threadId, sizeof(threadId));
    const char* const levelText = logLevelToString(level);
    if (std::freopen("/dev/console", "w", stdout) == nullptr) {
        std::fprintf(stderr, "Cannot open /dev/console\n%s: Direct [%s][%s] %s\n", tag, levelText, threadId, text);
        return;
    }
    std::fprintf(stdout, "%s: Direct [%s][%s] %s\n", tag, levelText, threadId, text);
    std::fflush(stdout);
    letConsoleCatchUp();
}

} // namespace DAX::Common::Logging
