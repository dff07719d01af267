#pragma once

#include <string>
#include <string_view>

#include <boost/optional.hpp>

#include "Common/IO/IStream.h"

namespace DAX::Service::ServiceCommon {

// Writes the length of the text in four bytes, low byte first, and then the text, as the data of a checksummed file.
// The file and its name are on the medium when this returns. Throws serializers::lossy_conversion for a length that
// does not fit in four bytes, before anything is written, and what the file throws.
void writeInstallationRecord(const std::string& path, std::string_view text);

// The text of such data. Empty when the data is shorter or longer than its length says.
boost::optional<std::string> readInstallationRecord(Common::IO::ISeekableStream& data);

} // namespace DAX::Service::ServiceCommon
