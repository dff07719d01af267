#pragma once

#include <string>
#include <string_view>

namespace DAX::Service::ServiceCommon {

// Writes the text, behind its length in four bytes, low byte first, as the data of a checksummed file, and takes it and
// its name to the medium. Throws serializers::lossy_conversion for a length that does not fit, before the file is
// touched, and what the file throws.
void writeInstallationRecord(const std::string& path, std::string_view text);

} // namespace DAX::Service::ServiceCommon
