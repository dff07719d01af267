#include "daxctl/SilenceGuard.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <utility>

#include <nlohmann/json.hpp>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include "clients_common/ExitStatus.h"
#include "clients_common/Output.h"
#include "daxctl/LongOutput.h"

namespace daxctl {

namespace {

using std::chrono::milliseconds;

// The command may have taken the signal itself.
const milliseconds LOOK_INTERVAL(100);

} // namespace

SilenceGuard::SilenceGuard(Interruption& interruption, std::function<void()> sayWhy, milliseconds patience)
    : m_interruption(interruption)
    , m_sayWhy(std::move(sayWhy))
    , m_patience(patience)
    , m_signals(::signalfd(-1, &interruption.signals(), SFD_CLOEXEC))
    , m_end(::eventfd(0, EFD_CLOEXEC))
    , m_heard(Clock::now())
    , m_thread([this] { watch(); }) {}

SilenceGuard::~SilenceGuard() {
    ::eventfd_write(m_end.get(), 1);
    m_thread.join();
}

void SilenceGuard::heard() {
    m_heard = Clock::now();
}

void SilenceGuard::watch() {
    if (waitForInterruption() && waitForSilence()) {
        m_sayWhy();
        ::_exit(clients_common::EXIT_REFUSED); // the other thread is in its call
    }
}

// False when the stretch has ended before.
bool SilenceGuard::waitForInterruption() {
    while (!m_interruption.requested()) {
        std::array<pollfd, 2> waiting{{{m_end.get(), POLLIN, 0}, {m_signals.get(), POLLIN, 0}}};
        ::poll(waiting.data(), waiting.size(), static_cast<int>(LOOK_INTERVAL.count()));
        if (waiting[0].revents != 0) {
            return false;
        }
    }
    return true;
}

// False when the stretch has ended before.
bool SilenceGuard::waitForSilence() {
    const auto begin = Clock::now();
    if (hasEnded(ONE_INTERRUPTION)) {
        return false;
    }
    while (m_interruption.next(milliseconds(0)) != 0) {
    }
    pthread_sigmask(SIG_UNBLOCK, &m_interruption.signals(), nullptr);
    for (;;) {
        const auto end = std::max(begin, m_heard.load()) + m_patience;
        const auto left = std::chrono::duration_cast<milliseconds>(end - Clock::now());
        if (left <= milliseconds(0)) {
            return true;
        }
        if (hasEnded(left)) {
            return false;
        }
    }
}

bool SilenceGuard::hasEnded(milliseconds within) const {
    pollfd end{m_end.get(), POLLIN, 0};
    ::poll(&end, 1, static_cast<int>(within.count()));
    return end.revents != 0;
}

void reportInterruption(const std::string& text, bool json) {
    const char* const behindABar = ::isatty(STDERR_FILENO) != 0 ? "\n" : "";
    std::fprintf(stderr, "%sInterrupted. %s\n", behindABar, text.c_str());
    if (json) {
        LongOutput output([] { return milliseconds::max(); });
        output.stream() << clients_common::jsonText({{"outcome", "interrupted"}, {"kind", clients_common::KIND_FAILED}},
                                                    2)
                        << '\n'
                        << std::flush;
    }
}

} // namespace daxctl
