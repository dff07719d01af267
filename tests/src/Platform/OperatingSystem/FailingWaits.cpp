#include "FailingWaits.h"

#include <atomic>
#include <cerrno>

#include <poll.h>
#include <sys/signalfd.h>

namespace DAX::Tests {

namespace {

int signalfdError = 0;
std::atomic<int> pollError{0};
std::atomic<bool> allBroken{false};
std::atomic<int> pollCalls{0};

} // namespace

void failSignalfd(int error) {
    signalfdError = error;
}

void failPoll(int error) {
    pollError = error;
}

void findAllBroken() {
    allBroken = true;
}

int polls() {
    return pollCalls;
}

extern "C" int __real_signalfd(int descriptor, const sigset_t* signals, int flags);
extern "C" int __wrap_signalfd(int descriptor, const sigset_t* signals, int flags);
extern "C" int __real_poll(pollfd* sources, nfds_t count, int timeout);
extern "C" int __wrap_poll(pollfd* sources, nfds_t count, int timeout);

int __wrap_signalfd(int descriptor, const sigset_t* signals, int flags) {
    if (signalfdError != 0) {
        errno = signalfdError;
        return -1;
    }
    return __real_signalfd(descriptor, signals, flags);
}

int __wrap_poll(pollfd* sources, nfds_t count, int timeout) {
    ++pollCalls;
    if (pollError != 0) {
        errno = pollError;
        return -1;
    }
    if (allBroken) {
        for (nfds_t i = 0; i < count; ++i) {
            sources[i].revents = POLLNVAL;
        }
        return static_cast<int>(count);
    }
    return __real_poll(sources, count, timeout);
}

} // namespace DAX::Tests
