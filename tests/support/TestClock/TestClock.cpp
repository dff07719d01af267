#include "support/TestClock.h"

#include <atomic>
#include <cerrno>
#include <ctime>
#include <utility>

#include <boost/chrono/system_clocks.hpp>
#include <pthread.h>

#include "support/WaitUntil.h"

namespace DAX::Tests {
namespace {

using boost::chrono::steady_clock;
using std::chrono::nanoseconds;

const nanoseconds::rep RUNNING = -1;
std::atomic<nanoseconds::rep> standing{RUNNING};
std::atomic<bool> skips{false};
std::function<void(TestClock::Duration)> onSkip; // set before `skips`

std::atomic<int> begunTimed{0};
std::atomic<int> begunUntimed{0};
std::atomic<int> timedOut{0};
std::atomic<int> looks{0}; // at the clock, by timed waits that go on

nanoseconds toDuration(const timespec& time) {
    return std::chrono::seconds(time.tv_sec) + nanoseconds(time.tv_nsec);
}

void skip(nanoseconds time) {
    standing += time.count();
    onSkip(std::chrono::duration_cast<TestClock::Duration>(time));
}

} // namespace

// The linker replaces boost::chrono::steady_clock::now() by the second function.
steady_clock::time_point realNow() __asm__("__real__ZN5boost6chrono12steady_clock3nowEv");
steady_clock::time_point now() __asm__("__wrap__ZN5boost6chrono12steady_clock3nowEv");
steady_clock::time_point now() {
    const nanoseconds::rep time = standing;
    return time == RUNNING ? realNow() : steady_clock::time_point(steady_clock::duration(time));
}

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the linker's
extern "C" {

int __real_nanosleep(const timespec* time, timespec* rest);
int __real_pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex);
int __real_pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* until);
int __wrap_nanosleep(const timespec* time, timespec* rest);
int __wrap_pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex);
int __wrap_pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* until);
}

namespace {

// The condition's clock is the monotonic one, as that of Boost's conditions is.
int waitByTestClock(pthread_cond_t* condition, pthread_mutex_t* mutex, nanoseconds until) {
    for (;;) {
        const nanoseconds left = until - nanoseconds(now().time_since_epoch().count());
        if (left <= nanoseconds::zero()) {
            return ETIMEDOUT;
        }
        if (skips) {
            skip(left);
            return ETIMEDOUT;
        }
        ++looks;
        const nanoseconds nextLook = nanoseconds(realNow().time_since_epoch().count()) + std::chrono::milliseconds(1);
        const timespec bound{nextLook.count() / 1000000000, nextLook.count() % 1000000000};
        const int result = __real_pthread_cond_timedwait(condition, mutex, &bound);
        if (result != ETIMEDOUT) {
            return result;
        }
    }
}

} // namespace

extern "C" {

int __wrap_nanosleep(const timespec* time, timespec* rest) {
    if (!skips) {
        return __real_nanosleep(time, rest);
    }
    skip(toDuration(*time));
    return 0;
}

int __wrap_pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
    ++begunUntimed;
    return __real_pthread_cond_wait(condition, mutex);
}

int __wrap_pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* until) {
    ++begunTimed;
    const int result = standing == RUNNING ? __real_pthread_cond_timedwait(condition, mutex, until)
                                           : waitByTestClock(condition, mutex, toDuration(*until));
    if (result == ETIMEDOUT) {
        ++timedOut;
    }
    return result;
}
}
// NOLINTEND(bugprone-reserved-identifier)

TestClock::TestClock() {
    standing = realNow().time_since_epoch().count();
}

TestClock::TestClock(std::function<void(Duration)> skipped) : TestClock() {
    onSkip = std::move(skipped);
    skips = true;
}

TestClock::~TestClock() {
    skips = false;
    standing = RUNNING;
}

void TestClock::pass(Duration time) {
    standing += nanoseconds(time).count();
}

// The first look may have begun before the call, with the time as it was then.
bool TestClock::isAwaited() const {
    const int before = looks;
    return waitUntil([before] { return looks >= before + 2; });
}

int begunTimedWaits() {
    return begunTimed;
}

int begunUntimedWaits() {
    return begunUntimed;
}

int timedOutWaits() {
    return timedOut;
}

} // namespace DAX::Tests
