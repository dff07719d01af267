#pragma once

#include <memory>
#include <mutex>

#include <boost/thread/thread_only.hpp>

#include "Platform/SystemAPI/GMainLoopAPI/MainLoopSingleton.h"

using GMainLoop = struct _GMainLoop; // NOLINT(bugprone-reserved-identifier): the library's own name

namespace DAX::Platform::MainLoop {

// A GLib main loop over the default context, on a thread of its own that runs until the object is destroyed. When that
// happens on the loop's own thread, the destructor cannot wait for the thread: it logs that, and the loop ends later.
class GLoopService final : public MainLoopSingleton {
public:
    GLoopService() = default;
    ~GLoopService() override;

    void initialize() override;
    bool isInitialized() const override;
    boost::thread::id getMainLoopThreadId() const override;
    void dispatchInMainLoop(void* data) override;
    std::unique_ptr<UserRegisteredCallback> createUserRegisteredCallback() override;

    // Ends the loop and waits for its thread. Before that it waits, without a bound, until the loop runs: a loop that
    // has not started yet would miss the order to end. Throws GenericException when not initialized, and
    // boost::thread_resource_error on the loop's own thread, where the loop then ends later. Any thread may call, also
    // while another one initializes.
    void stop();

private:
    void startThread();
    static void LoopThreadFunction(std::shared_ptr<GMainLoop> loop);
    std::shared_ptr<GMainLoop> loop() const;
    bool isRunning() const;
    bool hasEnded() const;
    void quit();
    void join();

    mutable std::mutex m_mutex; // guards the members below; m_thread only until it has been started
    bool m_initialized = false;
    boost::thread m_thread;
    boost::thread::id m_threadId;    // the thread's, until it has been joined
    std::weak_ptr<GMainLoop> m_loop; // the thread owns it; empty before the thread starts and after it has ended
    bool m_started = false;          // the thread was started
    bool m_quit = false;             // the loop was told to end
    std::mutex m_joinMutex;          // guards m_thread after it has been started
};

} // namespace DAX::Platform::MainLoop
