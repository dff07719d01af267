#pragma once

#include <istream>
#include <ostream>

namespace DAX::DAXCommon {

class DebugAndTestParameters;

// The record as an XML archive. Both throw std::exception for what cannot be read or written; the elements that were
// read before the bad place are in the record then.
void readDebugFile(std::istream& file, DebugAndTestParameters& parameters);
void writeDebugFile(std::ostream& file, const DebugAndTestParameters& parameters);

} // namespace DAX::DAXCommon
