#include "FailingPrctl.h"

namespace {

bool failing = false;

} // namespace

void failPrctl() {
    failing = true;
}

extern "C" int __real_prctl(int option, ...);
extern "C" int __wrap_prctl(int option, void* argument);

int __wrap_prctl(int option, void* argument) {
    return failing ? -1 : __real_prctl(option, argument);
}
