#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace KovanHost {

// What the simulated device knows of its power, and how it is stored as a GLib key file:
//     [announcements]
//     1795250000123456=state_changed 1
//
//     [requests]
//     1795250007654321=reboot 536870924
//
//     [power]
//     state=1
//     wakeup_reason=0
//
// The one group that must exist comes last, so that a text that was cut off is never taken for a whole one.

// An event. The key is its place in the order, which no later record of the same list has: the microseconds since 1970,
// or more when the clock was set back.
struct PowerRecord {
    std::int64_t sequence;
    std::string name;
    int number;
};

inline constexpr char STATE_CHANGED[] = "state_changed";
inline constexpr char POWER_OFF[] = "poweroff";
inline constexpr char POST_WAKEUP[] = "post_wakeup";
inline constexpr char REBOOT_REQUEST[] = "reboot";
inline constexpr char POWER_OFF_REQUEST[] = "poweroff";

// All that the file holds.
struct Power {
    int state = 0;
    int wakeUpReason = 0;
    // Oldest first. Of more than MOST_RECORDS the oldest are dropped.
    std::vector<PowerRecord> announcements;
    std::vector<PowerRecord> requests;
};

constexpr std::size_t MOST_RECORDS = 100;

// Adds a record of now, later than all others; drops the oldest one when there are too many.
void addRecord(std::vector<PowerRecord>& records, const std::string& name, int number);

// The place of the newest record; 0 when there is none.
std::int64_t lastSequence(const std::vector<PowerRecord>& records);

std::string textOf(const Power& power);

// Throws std::runtime_error with the reason when the text is cut off, is not a key file, or holds anything but these
// numbers. Any state from 0 on is accepted, known or not.
Power parsePower(const std::string& text);

} // namespace KovanHost
