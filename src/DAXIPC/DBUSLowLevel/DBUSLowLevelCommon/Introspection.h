#pragma once

#include <iterator>
#include <ostream>
#include <string>
#include <vector>

namespace DAX::DAXIPC::DBUSLowLevel {

// Writes the introspection document of an object whose methods all take one byte array and return three, with the
// methods in the given order.
void writeIntrospection(std::ostream& out, const std::string& interfaceName, const std::vector<std::string>& methods);

// The names of the methods in a table, in the table's order.
template <class Table>
std::vector<std::string> methodNames(const Table& table) {
    std::vector<std::string> names;
    names.reserve(std::size(table));
    for (const auto& entry : table) {
        names.push_back(entry.first);
    }
    return names;
}

} // namespace DAX::DAXIPC::DBUSLowLevel
