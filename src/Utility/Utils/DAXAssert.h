#pragma once

#include <boost/assert.hpp>

namespace DAX::Common::Utils {

// A failed assertion: sends an error event, writes to the console, logs and aborts. Whatever of these fails, be it for
// want of memory, the next ones follow. BOOST_ASSERT and BOOST_ASSERT_MSG, here and in library headers, end in the same
// place.
[[noreturn]] void DAXAssertionFailed(const char* expr, const char* function, const char* file, long line) noexcept;
[[noreturn]] void DAXAssertionFailedMsg(const char* expr, const char* msg, const char* function, const char* file,
                                        long line) noexcept;

} // namespace DAX::Common::Utils
