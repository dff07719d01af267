#include "FailingStrerror.h"

#include <cstddef>

namespace {

bool failing = false;

} // namespace

void failStrerror() {
    failing = true;
}

extern "C" char* __real_strerror_r(int number, char* buffer, std::size_t size);
extern "C" char* __wrap_strerror_r(int number, char* buffer, std::size_t size);

char* __wrap_strerror_r(int number, char* buffer, std::size_t size) {
    return failing ? nullptr : __real_strerror_r(number, buffer, size);
}
