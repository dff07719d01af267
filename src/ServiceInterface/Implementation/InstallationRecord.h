#pragma once

#include <string>
#include <string_view>

namespace DAX::Service::ServiceCommon {

// Writes the length of the text in four bytes, low byte first, and then the text, as the data of a checksummed file.
// The file and its name are on the medium when this returns. Throws serializers::lossy_conversion for a length that
// does not fit in four bytes, before anything is written, and what the file throws.
void writeInstallationRecord(const std::string& path, std::string_view text);

} // namespace DAX::Service::ServiceCommon
