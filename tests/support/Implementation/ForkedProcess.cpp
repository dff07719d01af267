#include "support/ForkedProcess.h"

#include <cerrno>
#include <csignal>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace DAX::Tests {

namespace {

[[noreturn]] void runAndExit(const std::function<int()>& function) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    int code = 255;
    try {
        code = function();
    } catch (...) {
    }
    _exit(code);
}

} // namespace

ForkedProcess::ForkedProcess(const std::function<int()>& function) : m_pid(fork()) {
    if (m_pid == 0) {
        runAndExit(function);
    }
}

ForkedProcess::~ForkedProcess() {
    if (m_pid > 0 && !m_reaped) {
        kill(m_pid, SIGKILL);
        wait();
    }
}

int ForkedProcess::wait() {
    int status = 0;
    while (waitpid(m_pid, &status, 0) < 0) {
        if (errno != EINTR) {
            return -1;
        }
    }
    m_reaped = true;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace DAX::Tests
