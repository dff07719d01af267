#include "SystemRecords.h"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <utility>

#include <pthread.h>

namespace DAX::Tests {

namespace {

bool recording = false;
std::vector<int> changes;

int timesLeft = 0;
std::function<void()> atTheLast;
std::vector<TimeOut> waits;
std::chrono::nanoseconds endOfLastWait{0};

std::chrono::nanoseconds sinceBoot(const timespec& time) {
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

std::chrono::nanoseconds sinceBoot() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return sinceBoot(now);
}

} // namespace

void recordHandlerChanges() {
    recording = true;
}

std::vector<int> handlerChanges() {
    return changes;
}

void letTimeRunOut(int times, std::function<void()> action) {
    timesLeft = times;
    atTheLast = std::move(action);
    endOfLastWait = sinceBoot();
}

std::vector<TimeOut> timeOuts() {
    return waits;
}

using Handler = void (*)(int);

extern "C" Handler __real_signal(int signum, Handler handler);
extern "C" Handler __wrap_signal(int signum, Handler handler);
extern "C" int __real_pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* until);
extern "C" int __wrap_pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* until);

Handler __wrap_signal(int signum, Handler handler) {
    if (recording) {
        changes.push_back(signum);
    }
    return __real_signal(signum, handler);
}

int __wrap_pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* until) {
    if (timesLeft == 0) {
        return __real_pthread_cond_timedwait(condition, mutex, until);
    }
    waits.push_back({sinceBoot(*until) - endOfLastWait, sinceBoot(*until) - sinceBoot()});
    if (--timesLeft == 0) {
        atTheLast();
    }
    endOfLastWait = sinceBoot();
    return ETIMEDOUT;
}

} // namespace DAX::Tests
