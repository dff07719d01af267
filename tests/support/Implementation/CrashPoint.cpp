#include "support/CrashPoint.h"

#include <cerrno>
#include <csignal>
#include <system_error>

#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace DAX::Tests {

namespace {

const int SYSTEM_CALL_STOP = SIGTRAP | 0x80;

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

// Runs in the child.
[[noreturn]] void runTraced(const std::function<void()>& operation) {
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) {
        _exit(1);
    }
    raise(SIGSTOP); // the count begins here
    operation();
    for (;;) {
        syscall(SYS_exit_group, 0); // not _exit(), which may do more under a sanitizer
    }
}

// Lets the child run to its next stop.
int nextStop(pid_t child, int signal) {
    int status = 0;
    if (ptrace(PTRACE_SYSCALL, child, nullptr, signal) != 0 || waitpid(child, &status, 0) != child) {
        fail("ptrace");
    }
    return status;
}

void startCounting(pid_t child) {
    int status = 0;
    const long options = PTRACE_O_EXITKILL | PTRACE_O_TRACESYSGOOD;
    if (waitpid(child, &status, 0) != child || !WIFSTOPPED(status) ||
        ptrace(PTRACE_SETOPTIONS, child, nullptr, options) != 0) {
        fail("ptrace");
    }
}

} // namespace

bool killAtSystemCall(const std::function<void()>& operation, int call) {
    const pid_t child = fork();
    if (child < 0) {
        fail("fork");
    }
    if (child == 0) {
        runTraced(operation);
    }
    startCounting(child);
    int stops = 0; // one at the beginning of a call, one at its end
    int signal = 0;
    for (;;) {
        const int status = nextStop(child, signal);
        if (!WIFSTOPPED(status)) {
            return false;
        }
        const bool atCall = WSTOPSIG(status) == SYSTEM_CALL_STOP;
        signal = atCall ? 0 : WSTOPSIG(status);
        if (atCall && stops++ == 2 * call) {
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
            return true;
        }
    }
}

} // namespace DAX::Tests
