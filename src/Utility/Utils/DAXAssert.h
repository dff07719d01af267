#pragma once

#include <boost/assert.hpp>

namespace DAX {
namespace Common {
namespace Utils {

// A failed assertion: logs, sends an error event, writes to the console and aborts. BOOST_ASSERT and BOOST_ASSERT_MSG,
// here and in library headers, end in the same place.
[[noreturn]] void DAXAssertionFailed(const char* expr, const char* function, const char* file, long line);
[[noreturn]] void DAXAssertionFailedMsg(const char* expr, const char* msg, const char* function, const char* file,
                                        long line);

} // namespace Utils
} // namespace Common
} // namespace DAX
