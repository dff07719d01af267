#pragma once

#include <string>
#include <vector>

namespace DAX {
namespace Tests {

// Makes the C libraries fail where they do so only without memory, and keeps what they are asked where it cannot be
// seen from outside. The functions that stand under --wrap in the build file of these tests go through here.

// The next call of the function by this thread fails, and does nothing else. dbus_connection_dispatch, which has no way
// to fail, throws std::runtime_error.
void failNext(const std::string& function);

// The longest time-out of a poll of this thread since the last question, in milliseconds.
int takeLongestWaitMs();

// The changes of match rules by any thread since the last question, oldest first: "add <rule>", "remove <rule>". With
// an error object, for whose sake the library would wait for the answer of the bus, " and wait" follows.
std::vector<std::string> takeMatchChanges();

// How often the library's locks were asked for by this process.
int threadInitializations();

} // namespace Tests
} // namespace DAX
