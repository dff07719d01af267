#pragma once

#include <memory>
#include <mutex>

#include <boost/thread/thread.hpp>

#include "Platform/SystemAPI/GMainLoopAPI/MainLoopSingleton.h"

using GMainLoop = struct _GMainLoop;

namespace DAX::Platform::MainLoop {

// A GLib main loop over the default context, on a thread of its own that runs until the object's end. Destroyed on that
// very thread, the object cannot wait for its end, which is logged; the loop then ends behind it.
class GLoopService : public MainLoopSingleton {
public:
    GLoopService() = default;
    ~GLoopService() override;

    void initialize() override;
    bool isInitialized() const override;
    boost::thread::id getMainLoopThreadId() const override;
    void dispatchInMainLoop(void* data) override;
    std::unique_ptr<UserRegisteredCallback> createUserRegisteredCallback() override;

    // Waits for the thread's end, and before that, without a bound, for the loop to run: to end a loop that has not
    // started would be lost. Throws GenericException when not initialized, boost::thread_resource_error on the loop's
    // own thread, where the loop then ends behind it. Any thread may call, also while another one initializes.
    void stop();

private:
    void startThread();
    static void LoopThreadFunction(std::shared_ptr<GMainLoop> loop);
    std::shared_ptr<GMainLoop> loop() const;
    bool isRunning() const;
    bool hasEnded() const;
    void quit();
    void join();

    mutable std::mutex m_mutex; // guards all below, but m_thread once it has been started
    bool m_initialized = false;
    boost::thread m_thread;
    boost::thread::id m_threadId;    // of the thread as long as it has not been joined
    std::weak_ptr<GMainLoop> m_loop; // the thread's own; empty before it and behind it
    bool m_started = false;          // the thread has been there
    bool m_quit = false;             // the loop was told to end
    std::mutex m_joinMutex;          // guards m_thread once it has been started
};

} // namespace DAX::Platform::MainLoop
