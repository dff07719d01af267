#pragma once

#include <functional>
#include <future>
#include <thread>

#include <sys/types.h>

namespace DAX::Tests {

// A call on a thread of its own. The destructor waits for it, so what the call waits for must happen before.
class OtherThread {
public:
    explicit OtherThread(const std::function<void()>& function);
    ~OtherThread();
    OtherThread(const OtherThread&) = delete;
    OtherThread& operator=(const OtherThread&) = delete;

    // Waits until the call is waiting for something: a lock, a condition, another thread. False when it has returned,
    // or when that takes longer than the bound.
    bool waitUntilItWaits() const;

    // Waits for the end of the call and throws what it threw.
    void finish() { m_returned.get(); }

private:
    bool waits() const;
    bool hasReturned() const;

    std::promise<pid_t> m_started;
    std::future<void> m_returned;
    std::thread m_thread;
    pid_t m_id;
};

} // namespace DAX::Tests
