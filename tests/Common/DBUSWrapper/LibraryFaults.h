#pragma once

#include <string>

namespace DAX {
namespace Tests {

// Makes the C libraries fail where they do so only without memory. The functions that stand under --wrap in the build
// file of these tests go through here.

// The next call of the function by this thread fails, and does nothing else.
void failNext(const std::string& function);

// With which time-out this thread last waited for a reply, in milliseconds.
int lastReplyTimeoutMs();

} // namespace Tests
} // namespace DAX
