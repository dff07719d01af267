#pragma once

#include <cstddef>
#include <string>

namespace DAX {
namespace Service {
namespace ServiceCommon {

// A file of data with a trailer behind it: the text "CHECKSUMED" and the CRC-32 of the data, low byte first.

// The four bytes of a number, low byte first. Throws GenericException when it does not fit.
std::string littleEndian32(std::size_t value);

// Replaces what the file held; on return it is on the medium. Throws GenericException with the path and the system's
// reason; what has been written by then stays.
void writeChecksummedFile(const std::string& path, const std::string& data);

// Whether the trailer is there and fits the data. Throws GenericException when the file cannot be read.
bool isChecksummedFileIntact(const std::string& path);

} // namespace ServiceCommon
} // namespace Service
} // namespace DAX
