#include "daxctl/EndRequest.h"

#include <atomic>
#include <cstdint>
#include <iterator>
#include <stdexcept>

#include "daxctl/Interruption.h"

namespace daxctl {

namespace {

using std::chrono::milliseconds;

// Longer than the waits of the bus library, which would begin anew at each signal.
const milliseconds REPETITION(200);

// What the handler uses.
static_assert(std::atomic<std::int64_t>::is_always_lock_free && std::atomic<timer_t>::is_always_lock_free);
std::atomic<std::int64_t> madeAt{0}; // in milliseconds; 0 when there is no request
std::atomic<timer_t> repetition{};

std::int64_t now() {
    timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return std::int64_t(time.tv_sec) * 1000 + time.tv_nsec / 1000000;
}

timespec toTimespec(milliseconds time) {
    return {time.count() / 1000, (time.count() % 1000) * 1000000};
}

void handle(int signal) {
    const std::int64_t made = madeAt;
    if (made == 0) {
        madeAt = now();
        const itimerspec times{toTimespec(REPETITION), toTimespec(REPETITION)};
        timer_settime(repetition, 0, &times, nullptr);
    } else if (now() - made > ONE_INTERRUPTION.count()) {
        std::signal(signal, SIG_DFL);
        std::raise(signal); // takes effect when this function returns
    }
}

} // namespace

EndRequest::EndRequest() {
    sigevent alarm{};
    alarm.sigev_notify = SIGEV_SIGNAL;
    alarm.sigev_signo = SIGALRM;
    if (timer_create(CLOCK_MONOTONIC, &alarm, &m_timer) != 0) {
        throw std::runtime_error("There is no timer left.");
    }
    repetition = m_timer;
    madeAt = 0;
    struct sigaction action {}; // without SA_RESTART
    action.sa_handler = [](int) {};
    sigaction(SIGALRM, &action, &m_alarmBefore);
    action.sa_handler = handle;
    for (std::size_t i = 0; i < std::size(SIGNALS); ++i) {
        sigaddset(&action.sa_mask, SIGNALS[i]);
    }
    for (std::size_t i = 0; i < std::size(SIGNALS); ++i) {
        sigaction(SIGNALS[i], nullptr, &m_before[i]);
        if (m_before[i].sa_handler != SIG_IGN) {
            sigaction(SIGNALS[i], &action, nullptr);
        }
    }
}

EndRequest::~EndRequest() {
    for (std::size_t i = 0; i < std::size(SIGNALS); ++i) {
        sigaction(SIGNALS[i], &m_before[i], nullptr);
    }
    timer_delete(m_timer);
    sigaction(SIGALRM, &m_alarmBefore, nullptr);
}

bool EndRequest::isMade() {
    return madeAt != 0;
}

milliseconds EndRequest::age() {
    return milliseconds(isMade() ? now() - madeAt : 0);
}

} // namespace daxctl
