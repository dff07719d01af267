#pragma once

#include <cstdint>

#include <boost/date_time/posix_time/posix_time_types.hpp>

namespace DAX::Platform::TimeConversions {

// Converts seconds since 1970-01-01 00:00:00 to a date and time in the same zone. Throws std::out_of_range for a year
// after 9999.
boost::posix_time::ptime uint64_t_to_ptime(std::uint64_t seconds);

} // namespace DAX::Platform::TimeConversions
