#pragma once

#include <ostream>
#include <string>

namespace DAX::Tests {

// The base of a row of a parameterized suite. GoogleTest prints the row by its name.
struct NamedRow {
    const char* name;
};

inline std::ostream& operator<<(std::ostream& out, const NamedRow& row) {
    return out << row.name;
}

// Names each test of a suite after its row: the last argument of INSTANTIATE_TEST_SUITE_P.
inline const auto rowName = [](const auto& info) { return std::string(info.param.name); };

} // namespace DAX::Tests
