#pragma once

#include <functional>

#include <sys/types.h>

namespace DAX::Tests {

// A second process that runs a function of the test, for what happens between processes. The function's result is the
// process's exit code; an exception that leaves it makes that 255. The process neither outlives the object nor returns
// into the test's own code. The calling process must have only one thread when it makes one.
class ForkedProcess {
public:
    explicit ForkedProcess(const std::function<int()>& function);
    ~ForkedProcess();
    ForkedProcess(const ForkedProcess&) = delete;
    ForkedProcess& operator=(const ForkedProcess&) = delete;

    // Waits for its end. Returns the exit code, or -1 when a signal ended it.
    int wait();

    pid_t pid() const { return m_pid; }

private:
    pid_t m_pid;
    bool m_reaped = false;
};

} // namespace DAX::Tests
