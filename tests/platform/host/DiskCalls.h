#pragma once

#include <functional>
#include <string>
#include <vector>

namespace DAX::Tests {

// What the calling thread does for a file to last while the action runs, in order: "fsync file", "fsync folder" and
// "rename". The calls stand under --wrap in the build file of these tests.
std::vector<std::string> diskCallsOf(const std::function<void()>& action);

// The next call of that kind by this thread fails with this errno value, and does nothing.
void failNextDiskCall(const std::string& kind, int errnoValue);

} // namespace DAX::Tests
