#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace DAX::Tests {

// Makes the C libraries fail where they only fail without memory, and records what cannot be seen from outside. The
// functions that are listed under --wrap in the build file of these tests end up here.

// Makes the next call of the function by this thread fail and do nothing else. dbus_connection_dispatch, which cannot
// fail, throws std::runtime_error.
void failNext(const std::string& function);

// The longest time-out of a poll of this thread since the last call of this function, in milliseconds.
int takeLongestWaitMs();

// The size of this thread's last allocation by operator new. The second function makes the next allocation of this size
// by this thread throw std::bad_alloc.
std::size_t lastAllocationSize();
void failAllocationOf(std::size_t size);

// The calls of the bus's own methods that this program has sent without waiting since the last call of this function,
// oldest first: "<method> <its first argument>".
std::vector<std::string> takeBusCalls();

// Runs `action` once, on the sending thread, right before the next such call of the method is sent.
void beforeBusCall(const std::string& method, std::function<void()> hook);

// How often this process has set up the library's locks.
int threadInitializations();

} // namespace DAX::Tests
