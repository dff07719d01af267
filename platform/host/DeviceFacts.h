#pragma once

#include <string>
#include <variant>
#include <vector>

namespace KovanHost {

// The facts of the simulated device that are known by name: where they stand in the device file, their types, and what
// holds when the file does not tell. The defaults make a plausible television.

using FactValue = std::variant<bool, int, std::string>;

struct DeviceFact {
    std::string group;
    std::string name;
    FactValue fallback;  // its type is the fact's type
    std::string meaning; // for people, in one line
    int number = -1;     // the number of a value of system_info.h
};

inline constexpr char SOFTWARE[] = "software";
inline constexpr char DIRECTORIES[] = "directories";
inline constexpr char SYSTEM_INFO[] = "system_info"; // a value whose number has no name here stands under its number
inline constexpr char FEATURES[] = "features";       // the custom values of system_info.h, under their keys
inline constexpr char PLANTCFG[] = "plantcfg";
inline constexpr char RESULTS[] = "results"; // under GROUP/NAME of a fact: see resultFact

// All of them, group by group.
const std::vector<DeviceFact>& deviceFacts();

// Null when there is none.
const DeviceFact* findFact(const std::string& group, const std::string& name);
const DeviceFact* findFact(int number);

// What the platform's function results in for a fact of [system_info], [features] or [plantcfg], a fact as well: its
// default is the function's success, any other number is given in place of the value.
DeviceFact resultFact(const std::string& group, const std::string& name);

// A device file that says all of that, with the meanings for comments.
std::string defaultDeviceText();

} // namespace KovanHost
