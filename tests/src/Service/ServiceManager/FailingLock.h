#pragma once

namespace DAX::Tests {

// The next lock of a mutex by this thread fails: std::mutex::lock() throws std::system_error. The function of the
// library that stands under --wrap in the build file of these tests goes through here.
void failNextLock();

} // namespace DAX::Tests
