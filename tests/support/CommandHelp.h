#pragma once

#include <map>
#include <set>
#include <string>

namespace DAX::Tests {

// What a program's --help tells of one of its commands.
struct CommandHelp {
    std::set<std::string> options; // "--json"; of the short names none
    std::set<std::string> commands;
};

// All commands of a program, by the words that name them; the program itself has none: "", "lock", "lock hold".
std::map<std::string, CommandHelp> commandsOf(const std::string& program);

} // namespace DAX::Tests
