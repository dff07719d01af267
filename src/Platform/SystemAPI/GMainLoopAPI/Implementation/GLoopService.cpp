#include "Platform/SystemAPI/GMainLoopAPI/Implementation/GLoopService.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <utility>

#include <boost/exception/diagnostic_information.hpp>
#include <boost/system/error_code.hpp>
#include <boost/thread/exceptions.hpp>
#include <glib.h>

#include "Common/Logging/LoggingStream.h"
#include "Debug/DebugCommon/DebugThreadName.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"
#include "Utility/Utils/UserDataRegister.h"

namespace DAX::Platform::MainLoop {
namespace {

using Common::Debug::ThreadDebug;
using Common::Utils::errinfo_description;
using Common::Utils::GenericException;
using Common::Utils::UserDataRegister;

const int START_LOOKS = 50;
const gulong START_PAUSE_IN_MICROSECONDS = 100000;
const gulong STOP_PAUSE_IN_MICROSECONDS = 1000000;
const std::chrono::milliseconds START_BOUND(1000);

// Signalled by the loop's first step, so that the start usually need not poll.
class FirstStep {
public:
    void say() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_done = true;
        m_condition.notify_all();
    }

    void await() {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_condition.wait_for(lock, START_BOUND, [this] { return m_done; });
    }

private:
    std::mutex m_mutex; // guards m_done
    std::condition_variable m_condition;
    bool m_done = false;
};

// Makes the default context signal the step as soon as it runs. The context's copy of the pointer is released with the
// source.
void sayWhenRunning(const std::shared_ptr<FirstStep>& step) {
    using Shared = std::shared_ptr<FirstStep>;
    const auto say = [](void* data) -> gboolean {
        (*static_cast<Shared*>(data))->say();
        return G_SOURCE_REMOVE;
    };
    const auto release = [](void* data) { const std::unique_ptr<Shared> owned(static_cast<Shared*>(data)); };
    g_idle_add_full(G_PRIORITY_HIGH, say, std::make_unique<Shared>(step).release(), release);
}

} // namespace

GLoopService::~GLoopService() {
    const boost::this_thread::disable_interruption uninterrupted;
    try {
        if (isInitialized()) {
            stop();
        }
    } catch (...) {
        DAX_LOG(ERR) << "Exception was caught in GLoopService: "
                     << boost::current_exception_diagnostic_information(true);
    }
}

void GLoopService::initialize() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_initialized) {
            return;
        }
        m_initialized = true;
    }
    DAX_LOG(INF) << "GLoopService::GLoopService(): Starting.";
    try {
        startThread();
    } catch (...) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_initialized = false; // there is nothing to stop
        throw;
    }
    for (int look = 1; !isRunning() && look < START_LOOKS; ++look) {
        DAX_LOG(INF) << "GLoopService: Waiting for g_main_loop to start running...";
        g_usleep(START_PAUSE_IN_MICROSECONDS);
    }
    DAX_LOG(INF) << "GLoopService::GLoopService(): Started thead id: " << getMainLoopThreadId();
}

void GLoopService::startThread() {
    const auto firstStep = std::make_shared<FirstStep>();
    sayWhenRunning(firstStep);
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        std::shared_ptr<GMainLoop> loop(g_main_loop_new(nullptr, FALSE), g_main_loop_unref);
        m_loop = loop;
        m_thread = boost::thread([loop = std::move(loop)]() mutable { LoopThreadFunction(std::move(loop)); });
        m_threadId = m_thread.get_id();
        m_started = true;
    }
    firstStep->await();
}

// Uses nothing but the loop: the object may be gone when the loop ends.
void GLoopService::LoopThreadFunction(std::shared_ptr<GMainLoop> loop) {
    ThreadDebug::SetThreadName("GMainLoop thread");
    DAX_LOG(INF) << "GLoopService::LoopThreadFunction(): Starting.";
    g_main_loop_run(loop.get());
    loop.reset();
    DAX_LOG(INF) << "GLoopService::LoopThreadFunction(): Stopped.";
}

std::shared_ptr<GMainLoop> GLoopService::loop() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_loop.lock();
}

bool GLoopService::isRunning() const {
    const std::shared_ptr<GMainLoop> running = loop();
    return running && g_main_loop_is_running(running.get()) != FALSE;
}

// A loop that has not started yet has not ended, unless the start has failed. A loop that was told to quit counts as
// ended, even when its thread is still on the way out: it no longer runs, and it will not start again.
bool GLoopService::hasEnded() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return !m_initialized || m_quit || (m_started && m_loop.expired());
}

void GLoopService::stop() {
    const boost::this_thread::disable_interruption uninterrupted;
    if (!isInitialized()) {
        DAX_THROW(GenericException(), errinfo_description("GMainLoop not initialized!"));
    }
    DAX_LOG(INF) << "GLoopService closing.";
    while (!isRunning() && !hasEnded()) {
        DAX_LOG(INF) << "GLoopService: Waiting for g_main_loop to start running before calling g_main_loop_quit.";
        g_usleep(STOP_PAUSE_IN_MICROSECONDS);
    }
    quit();
    join();
    DAX_LOG(INF) << "GLoopService closed.";
}

void GLoopService::quit() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (const std::shared_ptr<GMainLoop> running = m_loop.lock()) {
        g_main_loop_quit(running.get());
        m_quit = true;
    }
}

// Compares the thread ids before it takes the mutex: another thread that is joining holds the mutex until the loop's
// thread ends.
void GLoopService::join() {
    if (getMainLoopThreadId() == boost::this_thread::get_id()) {
        throw boost::thread_resource_error(static_cast<int>(boost::system::errc::resource_deadlock_would_occur),
                                           "boost thread: trying joining itself");
    }
    const std::lock_guard<std::mutex> joining(m_joinMutex);
    if (m_thread.joinable()) {
        m_thread.join();
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_threadId = boost::thread::id();
    }
}

bool GLoopService::isInitialized() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_initialized;
}

boost::thread::id GLoopService::getMainLoopThreadId() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_threadId;
}

void GLoopService::dispatchInMainLoop(void* data) {
    DAX_LOG(INF) << "GLoopService::dispatchInMainLoop thread: " << getMainLoopThreadId();
    g_main_context_invoke(nullptr, &UserDataRegister::GenericFunctorCallback<int()>::call<0>, data);
}

std::unique_ptr<UserRegisteredCallback> GLoopService::createUserRegisteredCallback() {
    return std::make_unique<UserRegisteredCallback>();
}

} // namespace DAX::Platform::MainLoop
