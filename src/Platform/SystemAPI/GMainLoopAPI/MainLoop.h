#pragma once

#include <boost/thread/thread_only.hpp>

namespace DAX::Platform::MainLoop {

// The thread that runs GLib's default main context, and with it all callbacks of the device. A guard on
// MainLoopSingleton must be held, and initializeMainLoop() must come before the others, or an assertion fails. Any
// thread may call the others.

// Starts the loop on a thread of its own, which runs until the guard is dropped. On return the loop runs, unless that
// takes it more than some six seconds. Call it once, before other threads use the loop. Throws
// boost::thread_resource_error when there can be no thread.
void initializeMainLoop();

// Whether the caller is on the loop's thread.
bool isRunningInMainLoop();

// Whether the loop has been started; it may not run yet.
bool isMainLoopInitialized();

// The loop's thread; the default id when there is none.
boost::thread::id getMainLoopTheadId();

} // namespace DAX::Platform::MainLoop
