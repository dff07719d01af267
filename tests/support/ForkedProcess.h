#pragma once

#include <functional>

#include <sys/types.h>

namespace DAX::Tests {

// A second process that runs a function of the test itself, for what happens between processes. The function's result
// is the process's exit code; an exception that leaves it makes that 255. It neither outlives the object nor returns
// into the test's own code. The calling process has one thread when it makes one.
class ForkedProcess {
public:
    explicit ForkedProcess(const std::function<int()>& function);
    ~ForkedProcess();
    ForkedProcess(const ForkedProcess&) = delete;
    ForkedProcess& operator=(const ForkedProcess&) = delete;

    // Waits for its end. The exit code, or -1 when a signal ended it.
    int wait();

    pid_t pid() const { return m_pid; }

private:
    pid_t m_pid;
    bool m_reaped = false;
};

} // namespace DAX::Tests
