#include "FailingLock.h"

#include <cerrno>
#include <utility>

#include <pthread.h>

namespace {

thread_local bool nextLockFails = false;

} // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the linker's
extern "C" {

int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
    return std::exchange(nextLockFails, false) ? EINVAL : __real_pthread_mutex_lock(mutex);
}
}
// NOLINTEND(bugprone-reserved-identifier)

namespace DAX::Tests {

void failNextLock() {
    nextLockFails = true;
}

} // namespace DAX::Tests
