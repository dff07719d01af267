#pragma once

namespace DAX::Tests {

// Whether the tests and what they measure are built with a sanitizer. Sanitizers make everything slower and keep memory
// that was freed.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool HAS_SANITIZER = true;
#else
constexpr bool HAS_SANITIZER = false;
#endif

} // namespace DAX::Tests
