#include "support/FakeConsole.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace FakeConsole {
namespace {

// What takes the console's place, when it is not empty. Never destroyed, since an assertion may fail at the very end of
// the process.
std::string& replacement() {
    static std::string& path = *std::make_unique<std::string>().release();
    return path;
}

bool refused = false;

} // namespace

void redirectTo(const std::string& path) {
    replacement() = path;
}

void refuse() {
    refused = true;
}

} // namespace FakeConsole

extern "C" std::FILE* __real_freopen(const char* path, const char* mode, std::FILE* stream);
extern "C" std::FILE* __wrap_freopen(const char* path, const char* mode, std::FILE* stream);

std::FILE* __wrap_freopen(const char* path, const char* mode, std::FILE* stream) {
    if (std::strcmp(path, "/dev/console") != 0) {
        return __real_freopen(path, mode, stream);
    }
    if (FakeConsole::refused) {
        errno = EACCES;
        return nullptr;
    }
    const bool replaced = !FakeConsole::replacement().empty();
    return __real_freopen(replaced ? FakeConsole::replacement().c_str() : path, mode, stream);
}
