#pragma once

#include <cstdint>

#include <boost/date_time/posix_time/posix_time_types.hpp>

namespace DAX::Platform::TimeConversions {

// Seconds from 1970-01-01 00:00:00 as a date and time of the same zone. Throws std::out_of_range for a year above 9999.
boost::posix_time::ptime uint64_t_to_ptime(std::uint64_t seconds);

} // namespace DAX::Platform::TimeConversions
