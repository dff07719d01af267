#pragma once

#include <functional>
#include <string>
#include <vector>

namespace DAX::Tests {

// The calls by which the calling thread makes a file last, while the action runs and in order: "fsync file", "fsync
// folder" and "rename". The build file of these tests lists them under --wrap.
std::vector<std::string> diskCallsOf(const std::function<void()>& action);

// Makes the next call of that kind by this thread fail with this errno value, without an effect.
void failNextDiskCall(const std::string& kind, int errnoValue);

} // namespace DAX::Tests
