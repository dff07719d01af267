#pragma once

#include <functional>

namespace DAX::Tests {

// Runs the operation in a child process and kills it at the beginning of its system call number `call`, before the call
// does anything. Calls are counted from 0, from the beginning of the operation. False when the operation ends before.
// Throws std::system_error when processes cannot be traced here.
bool killAtSystemCall(const std::function<void()>& operation, int call);

} // namespace DAX::Tests
