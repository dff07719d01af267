#include "Common/Utils/DelayedTrigger.h"

#include <utility>

#include <boost/exception/diagnostic_information.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Debug/DebugCommon/DebugThreadName.h"
#include "Utility/Utils/RethrowExceptionStream.h"

namespace DAX::Common::Utils {
namespace {

using Lock = std::unique_lock<std::recursive_mutex>;

// A copy has its own tags, so that a text added to it does not change the stored one.
boost::exception_ptr copyOf(const boost::exception_ptr& exception) {
    try {
        boost::rethrow_exception(exception);
    } catch (...) {
        return boost::current_exception();
    }
}

} // namespace

DelayedTrigger::DelayedTrigger(const std::string& name) : m_name(name) {
    m_thread = boost::thread([state = m_state, name] { waitThreadMethod(*state, name); });
}

DelayedTrigger::~DelayedTrigger() {
    boost::this_thread::disable_interruption uninterrupted;
    m_thread.interrupt();
    if (m_thread.get_id() == boost::this_thread::get_id()) {
        m_thread.detach(); // it ends after its action
        return;
    }
    m_thread.join();
    if (m_state->exception) {
        DAX_LOG(FTL) << "Exception was caught in DelayedTrigger(" << m_name
                     << "): " << boost::diagnostic_information(m_state->exception);
    }
}

void DelayedTrigger::arm(boost::chrono::milliseconds delay, std::function<void()> action) {
    const std::shared_ptr<State> state = m_state; // the action may destroy this object as soon as the lock is free
    {
        Lock lock(state->mutex);
        throwIfException();
        state->triggered = true;
        state->deadline = boost::chrono::steady_clock::now() + delay;
        state->action = std::move(action);
    }
    state->condition.notify_all();
}

void DelayedTrigger::cancel() {
    {
        Lock lock(m_state->mutex);
        throwIfException();
        m_state->triggered = false;
        m_state->action = nullptr;
    }
    m_state->condition.notify_all();
}

void DelayedTrigger::throwIfException() {
    Lock lock(m_state->mutex);
    if (m_state->exception) {
        rethrowWithText(copyOf(m_state->exception), [function = BOOST_CURRENT_FUNCTION](std::ostream& text) {
            text << " -> " << function << " (" << __FILE__ << ":" << __LINE__ << ") ";
        });
    }
}

void DelayedTrigger::waitThreadMethod(State& state, const std::string& name) {
    try {
        Debug::ThreadDebug::SetThreadName((name + " DelayedTrigger").c_str());
        waitForActions(state);
    } catch (const boost::thread_interrupted&) {
    } catch (...) {
        DAX_LOG(FTL) << "Exception caught in DelayedTrigger(" << name
                     << ") waiting thread: " << boost::current_exception_diagnostic_information(true);
        Lock lock(state.mutex);
        state.exception = boost::current_exception();
    }
}

void DelayedTrigger::waitForActions(State& state) {
    using boost::chrono::steady_clock;
    for (;;) {
        Lock lock(state.mutex);
        state.condition.wait(lock, [&state] { return state.triggered; });
        // Read the deadline again after each wait: meanwhile the trigger may have been armed anew.
        while (state.triggered && steady_clock::now() < state.deadline) {
            const steady_clock::time_point deadline = state.deadline;
            state.condition.wait_until(lock, deadline);
        }
        if (state.triggered) {
            boost::this_thread::interruption_point();
            const std::function<void()> action = std::move(state.action);
            state.triggered = false;
            action();
        }
    }
}

} // namespace DAX::Common::Utils
