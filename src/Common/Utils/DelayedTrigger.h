#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include <boost/chrono/system_clocks.hpp>
#include <boost/exception_ptr.hpp>
#include <boost/thread/condition_variable.hpp>
#include <boost/thread/thread_only.hpp>

namespace DAX::Common::Utils {

// Runs one action on a thread of its own when a deadline passes, unless the action is cancelled before. The action runs
// with the trigger's recursive mutex held, so cancelling waits for a running action. One thread arms and cancels; the
// action may do so, too, and may destroy the trigger. An action that throws ends the waiting thread: the failure is
// logged, and every later operation rethrows it.
class DelayedTrigger {
public:
    // Starts the waiting thread, named `name` + " DelayedTrigger". Throws boost::thread_resource_error when the system
    // has no thread left.
    explicit DelayedTrigger(const std::string& name);
    DelayedTrigger(const DelayedTrigger&) = delete;
    DelayedTrigger& operator=(const DelayedTrigger&) = delete;

    // Drops an action that is still waiting, and waits for a running one unless it is called from within that action.
    // Logs the failure of an earlier action. Never throws.
    ~DelayedTrigger();

    // Runs `action` once, `delay` from now on the steady clock. It replaces the action that is still waiting. Rethrows
    // the failure of an earlier action.
    void arm(boost::chrono::milliseconds delay, std::function<void()> action);

    // Drops the waiting action, if there is one; on return it does not run and will not run. Rethrows the failure of an
    // earlier action.
    void cancel();

    // Rethrows the failure of an earlier action, if there is one.
    void throwIfException();

private:
    // What the waiting thread shares with the trigger. It lives until both are gone, since the action may destroy the
    // trigger.
    struct State {
        std::recursive_mutex mutex; // guards the rest
        boost::condition_variable_any condition;
        bool triggered = false;
        boost::chrono::steady_clock::time_point deadline;
        std::function<void()> action;
        boost::exception_ptr exception;
    };

    static void waitThreadMethod(State& state, const std::string& name);
    static void waitForActions(State& state);

    std::string m_name;
    std::shared_ptr<State> m_state = std::make_shared<State>();
    boost::thread m_thread;
};

} // namespace DAX::Common::Utils
