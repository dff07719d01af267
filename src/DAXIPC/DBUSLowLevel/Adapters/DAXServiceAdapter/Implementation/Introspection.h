#pragma once

#include <ostream>
#include <string>

namespace DAX {
namespace DAXIPC {
namespace DBUSLowLevel {

// The introspection document of an object all of whose methods take one byte array and give three: what stands before
// the methods, each method, and what stands behind them.
void writeIntrospectionBegin(std::ostream& out, const std::string& interfaceName);
void writeIntrospectionMethod(std::ostream& out, const std::string& method);
void writeIntrospectionEnd(std::ostream& out);

} // namespace DBUSLowLevel
} // namespace DAXIPC
} // namespace DAX
