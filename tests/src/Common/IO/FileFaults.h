#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace DAX::Tests {

// Makes the file functions of the C library fail. The functions that are listed under --wrap in the build file of these
// tests end up here.

// Makes the `call`-th call of the function by this thread from now on fail with this errno value. The call does nothing
// else: fread reads nothing and sets the file's error flag, fwrite writes nothing. But these two transfer `bytesBefore`
// bytes before they fail.
void failNext(const std::string& function, int errnoValue, int call = 1, std::size_t bytesBefore = 0);

// Runs once, when this thread has looked at a file by its name (fstatat) for the next time.
void afterNextLook(std::function<void()> hook);

// How often this thread has called the function since the last takeCalls() for it.
int takeCalls(const std::string& function);

// The functions that this thread calls while the statement runs, in order, without ferror and clearerr.
std::vector<std::string> callsOf(const std::function<void()>& statement);

} // namespace DAX::Tests
