#include "TimedWaits.h"

#include <atomic>
#include <cerrno>

#include <pthread.h>

namespace DAX::Tests {

namespace {

std::atomic<int> begun{0};
std::atomic<int> timedOut{0};

} // namespace

int begunTimedWaits() {
    return begun;
}

int timedOutWaits() {
    return timedOut;
}

extern "C" int __real_pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* until);
extern "C" int __wrap_pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* until);

int __wrap_pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* until) {
    ++begun;
    const int result = __real_pthread_cond_timedwait(condition, mutex, until);
    if (result == ETIMEDOUT) {
        ++timedOut;
    }
    return result;
}

} // namespace DAX::Tests
