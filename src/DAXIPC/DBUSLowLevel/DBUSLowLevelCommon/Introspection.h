#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace DAX::DAXIPC::DBUSLowLevel {

// Writes the introspection document of an object all of whose methods take one byte array and give three, the methods
// in the order given.
void writeIntrospection(std::ostream& out, const std::string& interfaceName, const std::vector<std::string>& methods);

// The names of a table of methods, in its order.
template <class Table>
std::vector<std::string> methodNames(const Table& table) {
    std::vector<std::string> names;
    for (const auto& entry : table) {
        names.push_back(entry.first);
    }
    return names;
}

} // namespace DAX::DAXIPC::DBUSLowLevel
