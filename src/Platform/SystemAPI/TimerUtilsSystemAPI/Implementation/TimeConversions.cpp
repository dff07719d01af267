#include "Platform/SystemAPI/TimerUtilsSystemAPI/TimeConversions.h"

#include <stdexcept>

namespace DAX::Platform::TimeConversions {

boost::posix_time::ptime uint64_t_to_ptime(std::uint64_t seconds) {
    const std::uint64_t secondsOfADay = std::uint64_t{24} * 60 * 60;
    const std::uint64_t days = seconds / secondsOfADay;
    const boost::gregorian::date epoch(1970, 1, 1);
    const auto daysToTheEnd = static_cast<std::uint64_t>((boost::gregorian::date(9999, 12, 31) - epoch).days());
    if (days > daysToTheEnd) {
        throw std::out_of_range("Year is out of valid range: 1400..9999");
    }
    return boost::posix_time::ptime(epoch + boost::gregorian::days(static_cast<long>(days)),
                                    boost::posix_time::seconds(static_cast<long>(seconds % secondsOfADay)));
}

} // namespace DAX::Platform::TimeConversions
