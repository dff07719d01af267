#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include <boost/chrono/system_clocks.hpp>
#include <boost/exception_ptr.hpp>
#include <boost/thread/condition_variable.hpp>
#include <boost/thread/thread.hpp>

namespace DAX::Common::Utils {

// Runs one stored action on a thread of its own when a deadline passes, unless it is cancelled first. The action runs
// with the trigger's recursive mutex held: cancelling waits for a running action. One owner arms and cancels; the
// action may do so, too, and may destroy the trigger.
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
    // What the waiting thread shares with its owner: it is there until both have gone.
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
