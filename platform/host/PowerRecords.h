#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace KovanHost {

// What the simulated device knows of its power, and how that is written down as a GLib key file:
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
// The group that must be there stands last, so that a text which is cut off anywhere is not a whole one.

// Something that happened: the key is its place in the order, which no later record of the same list has again, the
// microseconds since 1970 unless the clock was set back.
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

struct Power {
    int state = 0;
    int wakeUpReason = 0;
    // Oldest first. The oldest of more than MOST_RECORDS are forgotten.
    std::vector<PowerRecord> announcements;
    std::vector<PowerRecord> requests;
};

constexpr std::size_t MOST_RECORDS = 100;

void addRecord(std::vector<PowerRecord>& records, const std::string& name, int number);

// The place of the newest record; 0 when there is none.
std::int64_t lastSequence(const std::vector<PowerRecord>& records);

std::string textOf(const Power& power);

// std::runtime_error with the reason when the text is not whole, is no key file, or holds something else than these
// numbers. Any state from 0 on is taken, known or not.
Power parsePower(const std::string& text);

} // namespace KovanHost
