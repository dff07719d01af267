#pragma once

#include <boost/thread/thread.hpp>

namespace DAX::Platform::MainLoop {

// The thread that runs GLib's default main context, and with it all callbacks of the device. A guard on
// MainLoopSingleton must be held; the questions need initializeMainLoop() before them. Any thread may ask.

// Starts the loop on a thread of its own, for as long as the guard is held.
void initializeMainLoop();

// Whether the caller is on the loop's thread.
bool isRunningInMainLoop();

bool isMainLoopInitialized();

boost::thread::id getMainLoopTheadId();

} // namespace DAX::Platform::MainLoop
