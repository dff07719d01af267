#pragma once

#include <chrono>
#include <csignal>
#include <ctime>

namespace daxctl {

// Lets a command that shows something for long end in good order. While it lives, the first SIGINT, SIGTERM or SIGHUP
// does not end the process, unless the process was started with it ignored: it asks for the end. A call that waits then
// fails with EINTR, also one that began to wait right behind a look at isMade(). The second one ends the process at
// once. Signals within 100 ms are one, as timeout(1) sends its signal to the process and to its group.
//
// One at a time, in a process of one thread. It takes SIGALRM.
class EndRequest {
public:
    EndRequest();
    ~EndRequest();
    EndRequest(const EndRequest&) = delete;
    EndRequest& operator=(const EndRequest&) = delete;

    // Whether the end has been asked for since the latest object was made. That stays true after the end of the object.
    static bool isMade();

    // How long ago that was; 0 when it was not.
    static std::chrono::milliseconds age();

private:
    static constexpr int SIGNALS[] = {SIGINT, SIGTERM, SIGHUP};

    struct sigaction m_before[3] = {};
    struct sigaction m_alarmBefore {};
    timer_t m_timer{};
};

} // namespace daxctl
