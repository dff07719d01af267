#pragma once

#include <functional>

namespace DAX::Tests {

// Runs the operation in a child process that is killed at the beginning of its system call number `call`, counted from
// 0 at the beginning of the operation, before the call does anything. False when the operation came to its end before.
// std::system_error when processes cannot be traced here.
bool killAtSystemCall(const std::function<void()>& operation, int call);

} // namespace DAX::Tests
