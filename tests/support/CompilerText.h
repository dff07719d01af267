#pragma once

namespace DAX::Tests {

// Of two spellings of the same function or type, the one of the compiler that this was compiled with: names of
// functions that reach a text, an exception or an assertion are spelled by the compiler.
constexpr const char* compilerText([[maybe_unused]] const char* gnu, [[maybe_unused]] const char* clang) {
#ifdef __clang__
    return clang;
#else
    return gnu;
#endif
}

} // namespace DAX::Tests
