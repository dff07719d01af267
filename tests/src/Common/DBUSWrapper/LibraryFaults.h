#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace DAX::Tests {

// Makes the C libraries fail where they do so only without memory, and keeps what they are asked where it cannot be
// seen from outside. The functions that stand under --wrap in the build file of these tests go through here.

// The next call of the function by this thread fails, and does nothing else. dbus_connection_dispatch, which has no way
// to fail, throws std::runtime_error.
void failNext(const std::string& function);

// The longest time-out of a poll of this thread since the last question, in milliseconds.
int takeLongestWaitMs();

// How much this thread asked operator new for last; and the next allocation of this size on this thread throws
// std::bad_alloc.
std::size_t lastAllocationSize();
void failAllocationOf(std::size_t size);

// The calls of the bus's own methods that code of this program has sent without waiting since the last question, oldest
// first: "<method> <its first argument>".
std::vector<std::string> takeBusCalls();

// Runs once, on the thread that sends, right before the next such call of the method goes out.
void beforeBusCall(const std::string& method, std::function<void()> hook);

// How often the library's locks were asked for by this process.
int threadInitializations();

} // namespace DAX::Tests
