#include "Platform/SystemAPI/GMainLoopAPI/Implementation/GLoopService.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <utility>

#include <boost/exception/diagnostic_information.hpp>

#include <glib.h>

#include "Common/Logging/LoggingStream.h"
#include "Debug/DebugCommon/DebugThreadName.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"
#include "Utility/Utils/UserDataRegister.h"

namespace DAX {
namespace Platform {
namespace MainLoop {
namespace {

using Common::Debug::ThreadDebug;
using Common::Utils::errinfo_description;
using Common::Utils::GenericException;
using Common::Utils::UserDataRegister;

const int START_LOOKS = 50;
const gulong START_PAUSE_IN_MICROSECONDS = 100000;
const gulong STOP_PAUSE_IN_MICROSECONDS = 1000000;
const std::chrono::milliseconds START_BOUND(1000);

// Said by the loop's first step, so that a start usually need not look twice.
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

// Has the default context say the step when it runs. The context's copy of the pointer goes with its source.
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
    startThread();
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
    }
    firstStep->await();
}

// Touches the loop alone: the object may be gone when the loop ends.
void GLoopService::LoopThreadFunction(std::shared_ptr<GMainLoop> loop) {
    ThreadDebug::SetThreadName("GMainLoop thread");
    DAX_LOG(INF) << "GLoopService::LoopThreadFunction(): Starting.";
    g_main_loop_run(loop.get());
    loop.reset();
    DAX_LOG(INF) << "GLoopService::LoopThreadFunction(): Stopped.";
}

bool GLoopService::isRunning() const {
    const std::shared_ptr<GMainLoop> loop = m_loop.lock();
    return loop && g_main_loop_is_running(loop.get()) != FALSE;
}

bool GLoopService::hasEnded() const {
    return m_loop.expired();
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
    if (const std::shared_ptr<GMainLoop> loop = m_loop.lock()) {
        g_main_loop_quit(loop.get());
    }
    if (m_thread.joinable()) {
        m_thread.join();
    }
    DAX_LOG(INF) << "GLoopService closed.";
}

bool GLoopService::isInitialized() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_initialized;
}

boost::thread::id GLoopService::getMainLoopThreadId() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_thread.get_id();
}

void GLoopService::dispatchInMainLoop(void* data) {
    DAX_LOG(INF) << "GLoopService::dispatchInMainLoop thread: " << getMainLoopThreadId();
    g_main_context_invoke(nullptr, &UserDataRegister::GenericFunctorCallback<int()>::call<0>, data);
}

std::unique_ptr<UserRegisteredCallback> GLoopService::createUserRegisteredCallback() {
    return std::make_unique<UserRegisteredCallback>();
}

} // namespace MainLoop
} // namespace Platform
} // namespace DAX
