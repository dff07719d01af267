#pragma once

namespace DAX::Tests {

// Makes the next lock of a mutex by this thread fail: std::mutex::lock() throws std::system_error. The build file of
// these tests lists the library's function under --wrap, so that its calls come here.
void failNextLock();

} // namespace DAX::Tests
