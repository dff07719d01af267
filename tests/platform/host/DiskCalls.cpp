#include "DiskCalls.h"

#include <cerrno>

#include <sys/stat.h>

namespace DAX::Tests {
namespace {

thread_local std::vector<std::string>* calls = nullptr;
thread_local std::string failingKind;
thread_local int failure = 0;

bool fails(const std::string& kind) {
    if (calls != nullptr) {
        calls->push_back(kind);
    }
    if (kind != failingKind) {
        return false;
    }
    failingKind.clear();
    errno = failure;
    return true;
}

} // namespace

std::vector<std::string> diskCallsOf(const std::function<void()>& action) {
    std::vector<std::string> made;
    calls = &made;
    action();
    calls = nullptr;
    return made;
}

void failNextDiskCall(const std::string& kind, int errnoValue) {
    failingKind = kind;
    failure = errnoValue;
}

} // namespace DAX::Tests

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the linker's
extern "C" {

int __real_fsync(int descriptor);
int __wrap_fsync(int descriptor) {
    struct stat status {};
    fstat(descriptor, &status);
    return DAX::Tests::fails(S_ISDIR(status.st_mode) ? "fsync folder" : "fsync file") ? -1 : __real_fsync(descriptor);
}

int __real_rename(const char* from, const char* to);
int __wrap_rename(const char* from, const char* to) {
    return DAX::Tests::fails("rename") ? -1 : __real_rename(from, to);
}
}
// NOLINTEND(bugprone-reserved-identifier)
