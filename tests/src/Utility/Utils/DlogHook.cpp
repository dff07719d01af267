#include "DlogHook.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

#include <unistd.h>

namespace {

struct Hook {
    std::string part;
    std::function<void()> action;
};

bool toStandardError = false;

Hook& hook() {
    static Hook instance;
    return instance;
}

} // namespace

void onLogLine(const std::string& part, std::function<void()> action) {
    hook() = {part, std::move(action)};
}

void logToStandardError() {
    toStandardError = true;
}

extern "C" int __real___dlog_print(int logId, int priority, const char* tag, const char* format, ...);
extern "C" int __wrap___dlog_print(int logId, int priority, const char* tag, const char* format, ...);

int __wrap___dlog_print(int logId, int priority, const char* tag, const char* format, ...) {
    char text[2048] = "";
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);
    if (hook().action && std::string(text).find(hook().part) != std::string::npos) {
        std::exchange(hook().action, nullptr)();
    }
    if (toStandardError) {
        return dprintf(STDERR_FILENO, "%s\n", text);
    }
    return __real___dlog_print(logId, priority, tag, "%s", text);
}
