#include "FileFaults.h"

#include <cerrno>
#include <cstdio>
#include <map>
#include <utility>

#include <sys/stat.h>
#include <sys/types.h>

namespace DAX::Tests {
namespace {

thread_local std::string faultyFunction;
thread_local int faultyErrno = 0;
thread_local int callsToTheFault = 0;
thread_local std::size_t bytesBeforeTheFault = 0;
thread_local std::FILE* flaggedFile = nullptr; // the file whose error flag is set
thread_local std::map<std::string, int> calls;
thread_local std::vector<std::string>* order = nullptr;
thread_local std::function<void()> lookHook;

// Whether this call is the one that has to fail.
bool fails(const char* function) {
    ++calls[function];
    if (order != nullptr) {
        order->push_back(function);
    }
    if (faultyFunction != function || --callsToTheFault != 0) {
        return false;
    }
    faultyFunction.clear();
    errno = faultyErrno;
    return true;
}

void forgetFlagOf(const std::FILE* file) {
    if (file == flaggedFile) {
        flaggedFile = nullptr;
    }
}

} // namespace

void failNext(const std::string& function, int errnoValue, int call, std::size_t bytesBefore) {
    bytesBeforeTheFault = bytesBefore;
    callsToTheFault = call;
    faultyFunction = function;
    faultyErrno = errnoValue;
}

void afterNextLook(std::function<void()> hook) {
    lookHook = std::move(hook);
}

int takeCalls(const std::string& function) {
    return std::exchange(calls[function], 0);
}

std::vector<std::string> callsOf(const std::function<void()>& statement) {
    std::vector<std::string> made;
    order = &made;
    try {
        statement();
    } catch (...) {
        order = nullptr;
        throw;
    }
    order = nullptr;
    return made;
}

} // namespace DAX::Tests

using DAX::Tests::bytesBeforeTheFault;
using DAX::Tests::fails;
using DAX::Tests::flaggedFile;
using DAX::Tests::forgetFlagOf;
using DAX::Tests::lookHook;

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the linker's
extern "C" {

std::FILE* __real_fopen64(const char* path, const char* mode);
std::FILE* __wrap_fopen64(const char* path, const char* mode) {
    return fails("fopen64") ? nullptr : __real_fopen64(path, mode);
}

int __real_fstatat(int folder, const char* path, struct stat* status, int flags);
int __wrap_fstatat(int folder, const char* path, struct stat* status, int flags) {
    const int result = __real_fstatat(folder, path, status, flags);
    const int failure = errno;
    if (const auto hook = std::exchange(lookHook, nullptr)) {
        hook();
    }
    errno = failure;
    return result;
}

int __real_fseeko64(std::FILE* file, off64_t offset, int whence);
int __wrap_fseeko64(std::FILE* file, off64_t offset, int whence) {
    return fails("fseeko64") ? -1 : __real_fseeko64(file, offset, whence);
}

off64_t __real_ftello64(std::FILE* file);
off64_t __wrap_ftello64(std::FILE* file) {
    return fails("ftello64") ? -1 : __real_ftello64(file);
}

std::size_t __real_fwrite(const void* data, std::size_t size, std::size_t count, std::FILE* file);
std::size_t __wrap_fwrite(const void* data, std::size_t size, std::size_t count, std::FILE* file) {
    if (!fails("fwrite")) {
        return __real_fwrite(data, size, count, file);
    }
    const int failure = errno;
    const std::size_t taken = __real_fwrite(data, size, bytesBeforeTheFault, file);
    errno = failure;
    return taken;
}

int __real_fflush(std::FILE* file);
int __wrap_fflush(std::FILE* file) {
    return fails("fflush") ? EOF : __real_fflush(file);
}

int __real_fileno(std::FILE* file);
int __wrap_fileno(std::FILE* file) {
    return fails("fileno") ? -1 : __real_fileno(file);
}

ssize_t __real_write(int descriptor, const void* data, std::size_t size);
ssize_t __wrap_write(int descriptor, const void* data, std::size_t size) {
    return fails("write") ? -1 : __real_write(descriptor, data, size);
}

int __real_rename(const char* from, const char* to);
int __wrap_rename(const char* from, const char* to) {
    return fails("rename") ? -1 : __real_rename(from, to);
}

// Like the real one, it closes the descriptor even when it fails.
int __real_close(int descriptor);
int __wrap_close(int descriptor) {
    const bool failing = fails("close");
    const int failure = errno;
    const int result = __real_close(descriptor);
    errno = failing ? failure : errno;
    return failing ? -1 : result;
}

int __real_fsync(int descriptor);
int __wrap_fsync(int descriptor) {
    return fails("fsync") ? -1 : __real_fsync(descriptor);
}

std::size_t __real_fread(void* data, std::size_t size, std::size_t count, std::FILE* file);
std::size_t __wrap_fread(void* data, std::size_t size, std::size_t count, std::FILE* file) {
    if (!fails("fread")) {
        return __real_fread(data, size, count, file);
    }
    const int failure = errno;
    flaggedFile = file;
    const std::size_t given = __real_fread(data, size, bytesBeforeTheFault, file);
    errno = failure;
    return given;
}

int __real_ferror(std::FILE* file);
int __wrap_ferror(std::FILE* file) {
    return file == flaggedFile ? 1 : __real_ferror(file);
}

void __real_clearerr(std::FILE* file);
void __wrap_clearerr(std::FILE* file) {
    forgetFlagOf(file);
    __real_clearerr(file);
}

// Like the real one, it closes the file even when it fails.
int __real_fclose(std::FILE* file);
int __wrap_fclose(std::FILE* file) {
    const bool failing = fails("fclose");
    forgetFlagOf(file);
    const int failure = errno;
    const int result = __real_fclose(file);
    errno = failing ? failure : errno;
    return failing ? EOF : result;
}
}
// NOLINTEND(bugprone-reserved-identifier)
