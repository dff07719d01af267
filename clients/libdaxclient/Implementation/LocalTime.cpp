#include <cstdio>
#include <ctime>

#include "dax/client.h"

namespace dax {

std::string LocalTime::toString() const {
    char text[128];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d", year, month, day, hour, minute, second);
    std::string written = text;
    if (fraction.count() != 0) {
        std::snprintf(text, sizeof text, ".%06lld", static_cast<long long>(fraction.count()));
        written += text;
    }
    return written;
}

std::chrono::system_clock::time_point LocalTime::toSystemTime() const {
    std::tm time{};
    time.tm_year = year - 1900;
    time.tm_mon = month - 1;
    time.tm_mday = day;
    time.tm_hour = hour;
    time.tm_min = minute;
    time.tm_sec = second;
    time.tm_isdst = -1; // let the system find out
    return std::chrono::system_clock::from_time_t(std::mktime(&time)) +
           std::chrono::duration_cast<std::chrono::system_clock::duration>(fraction);
}

} // namespace dax
