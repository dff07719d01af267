#pragma once

#include <functional>
#include <string>

#include <boost/chrono/system_clocks.hpp>
#include <boost/exception_ptr.hpp>
#include <boost/thread/condition_variable.hpp>
#include <boost/thread/thread.hpp>
#include <mutex>

namespace DAX {
namespace Common {
namespace Utils {

// Runs one stored action on a thread of its own when a deadline passes, unless it is cancelled first. The action runs
// with the trigger's recursive mutex held: cancelling waits for a running action. One owner arms and cancels.
class DelayedTrigger {
public:
    // Starts the waiting thread, which takes the name `name` and " DelayedTrigger".
    explicit DelayedTrigger(const std::string& name);
    DelayedTrigger(const DelayedTrigger&) = delete;
    DelayedTrigger& operator=(const DelayedTrigger&) = delete;
    ~DelayedTrigger();

    // Both rethrow the failure of an earlier action, if there was one: the trigger is then without a thread.
    void arm(boost::chrono::milliseconds delay, std::function<void()> action);
    void cancel();

    // Rethrows the failure of the waiting thread, if there is one.
    void throwIfException();

private:
    void waitThreadMethod(const std::string& name);
    void waitForActions();

    std::string m_name;
    boost::thread m_thread;
    std::recursive_mutex m_mutex;
    boost::condition_variable_any m_condition;
    bool m_triggered = false;
    boost::chrono::steady_clock::time_point m_deadline;
    std::function<void()> m_action;
    boost::exception_ptr m_exception;
};

} // namespace Utils
} // namespace Common
} // namespace DAX
