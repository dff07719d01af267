#pragma once

#include <istream>
#include <ostream>

namespace DAX::DAXCommon {

class DebugAndTestParameters;

// The record as an XML archive. Both throw std::exception when something cannot be read or written; the elements before
// the bad place are then in the record.
void readDebugFile(std::istream& file, DebugAndTestParameters& parameters);
void writeDebugFile(std::ostream& file, const DebugAndTestParameters& parameters);

} // namespace DAX::DAXCommon
