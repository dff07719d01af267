#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace DAX::Tests {

// Makes the C library's files fail. The functions that stand under --wrap in the build file of these tests go through
// here.

// The next call of the function by this thread, or the one of this number from now on, fails with this errno value, and
// does nothing else. fread gives nothing and sets the file's error flag, fwrite takes nothing; but first they move this
// many bytes.
void failNext(const std::string& function, int errnoValue, int call = 1, std::size_t bytesBefore = 0);

// How often this thread called the function since it asked before.
int takeCalls(const std::string& function);

// What this thread calls while the statement runs, in order; ferror and clearerr are left out.
std::vector<std::string> callsOf(const std::function<void()>& statement);

} // namespace DAX::Tests
