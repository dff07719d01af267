#pragma once

#include <string>
#include <variant>
#include <vector>

namespace KovanHost {

// The facts of the simulated device that have a name: where they stand in the device file, their types, and their
// defaults for what the file leaves out. The defaults make a plausible television.

using FactValue = std::variant<bool, int, std::string>;

// One fact: "name" in the group "[group]" of the device file.
struct DeviceFact {
    std::string group;
    std::string name;
    FactValue fallback;  // its type is the fact's type
    std::string meaning; // for people, in one line
    int number = -1;     // the number of a value of system_info.h
};

inline constexpr char SOFTWARE[] = "software";
inline constexpr char DIRECTORIES[] = "directories";
inline constexpr char SYSTEM_INFO[] = "system_info"; // a value without a name here stands under its number
inline constexpr char FEATURES[] = "features";       // the custom values of system_info.h, under their keys
inline constexpr char PLANTCFG[] = "plantcfg";
inline constexpr char RESULTS[] = "results"; // under GROUP/NAME of a fact: see resultFact

// All facts, group by group.
const std::vector<DeviceFact>& deviceFacts();

// Null when there is none.
const DeviceFact* findFact(const std::string& group, const std::string& name);
const DeviceFact* findFact(int number);

// The result of the platform's function for a fact of [system_info], [features] or [plantcfg]; it is a fact as well.
// Its default is the function's success. With any other number the function fails with that number and gives no value.
DeviceFact resultFact(const std::string& group, const std::string& name);

// A device file with all facts at their defaults, and their meanings as comments.
std::string defaultDeviceText();

} // namespace KovanHost
