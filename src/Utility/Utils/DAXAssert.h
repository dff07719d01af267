#pragma once

#include <boost/assert.hpp>

namespace DAX::Common::Utils {

// Reports a failed assertion and ends the process: sends an error event, writes to the console, logs and aborts. If one
// of these fails, even for lack of memory, the others follow all the same. BOOST_ASSERT and BOOST_ASSERT_MSG, here and
// in library headers, end here, too. Any thread.
[[noreturn]] void DAXAssertionFailed(const char* expr, const char* function, const char* file, long line) noexcept;
[[noreturn]] void DAXAssertionFailedMsg(const char* expr, const char* msg, const char* function, const char* file,
                                        long line) noexcept;

} // namespace DAX::Common::Utils
