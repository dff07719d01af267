#include <cstdio>
#include <ctime>
#include <stdexcept>

#include "dax/client.h"

namespace dax {

using std::chrono::duration_cast;
using std::chrono::seconds;
using std::chrono::system_clock;

namespace {

[[noreturn]] void throwOutOfRange(const LocalTime& time) {
    throw std::out_of_range("The system's clock cannot hold the time " + time.toString() + ".");
}

// Any fraction of a second can be added to such a time.
bool fitsTheClock(seconds sinceEpoch) {
    return sinceEpoch > duration_cast<seconds>(system_clock::duration::min()) &&
           sinceEpoch < duration_cast<seconds>(system_clock::duration::max());
}

} // namespace

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

system_clock::time_point LocalTime::toSystemTime() const {
    const int unset = -1;
    std::tm time{};
    time.tm_year = year - 1900;
    time.tm_mon = month - 1;
    time.tm_mday = day;
    time.tm_hour = hour;
    time.tm_min = minute;
    time.tm_sec = second;
    time.tm_isdst = -1;   // let the system find out
    time.tm_wday = unset; // set by a success: its result can be -1, too
    const seconds sinceEpoch(std::mktime(&time));
    if (time.tm_wday == unset || !fitsTheClock(sinceEpoch)) {
        throwOutOfRange(*this);
    }
    return system_clock::time_point(sinceEpoch) + duration_cast<system_clock::duration>(fraction);
}

} // namespace dax
