#include "Common/Utils/DelayedTrigger.h"

#include <utility>

#include <boost/exception/diagnostic_information.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Debug/DebugCommon/DebugThreadName.h"
#include "Utility/Utils/RethrowExceptionStream.h"

namespace DAX {
namespace Common {
namespace Utils {
namespace {

using Lock = std::unique_lock<std::recursive_mutex>;

} // namespace

DelayedTrigger::DelayedTrigger(const std::string& name) : m_name(name) {
    m_thread = boost::thread([this, name] { waitThreadMethod(name); });
}

DelayedTrigger::~DelayedTrigger() {
    boost::this_thread::disable_interruption uninterrupted;
    m_thread.interrupt();
    if (m_thread.get_id() == boost::this_thread::get_id()) {
        return;
    }
    m_thread.join();
    if (m_exception) {
        DAX_LOG(FTL) << "Exception was caught in DelayedTrigger(" << m_name
                     << "): " << boost::diagnostic_information(m_exception);
    }
}

void DelayedTrigger::arm(boost::chrono::milliseconds delay, std::function<void()> action) {
    {
        Lock lock(m_mutex);
        throwIfException();
        m_triggered = true;
        m_deadline = boost::chrono::steady_clock::now() + delay;
        m_action = std::move(action);
    }
    m_condition.notify_all();
}

void DelayedTrigger::cancel() {
    {
        Lock lock(m_mutex);
        throwIfException();
        m_triggered = false;
        m_action = nullptr;
    }
    m_condition.notify_all();
}

void DelayedTrigger::throwIfException() {
    Lock lock(m_mutex);
    if (m_exception) {
        rethrowWithText(m_exception, [function = BOOST_CURRENT_FUNCTION](std::ostream& text) {
            text << " -> " << function << " (" << __FILE__ << ":" << __LINE__ << ") ";
        });
    }
}

void DelayedTrigger::waitThreadMethod(const std::string& name) {
    try {
        Debug::ThreadDebug::SetThreadName((name + " DelayedTrigger").c_str());
        waitForActions();
    } catch (const boost::thread_interrupted&) {
    } catch (...) {
        DAX_LOG(FTL) << "Exception caught in DelayedTrigger(" << name
                     << ") waiting thread: " << boost::current_exception_diagnostic_information(true);
        Lock lock(m_mutex);
        m_exception = boost::current_exception();
    }
}

void DelayedTrigger::waitForActions() {
    for (;;) {
        Lock lock(m_mutex);
        m_condition.wait(lock, [this] { return m_triggered; });
        const auto expired = boost::cv_status::timeout;
        while (m_triggered && m_condition.wait_until(lock, m_deadline) != expired) {
        }
        if (m_triggered) {
            const std::function<void()> action = std::move(m_action);
            m_triggered = false;
            action();
        }
    }
}

} // namespace Utils
} // namespace Common
} // namespace DAX
