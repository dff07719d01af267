#pragma once

#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "DAXIPC/DBUSLowLevel/Decoder/ArchiveDecoder.h"

namespace monitor {

using DAX::DAXIPC::DBUSLowLevel::DecodedArchive;
using DAX::DAXIPC::DBUSLowLevel::DecodedValue;

// A value as people read it: 4, true, OTN, "text", <2 bytes: 0da5>, [a, b], {result: SUCCESS, ...}, none. One line, in
// which a text or byte array has at most `most` characters.
std::string valueAsText(const DecodedValue& value, std::size_t most);

// All fields of an archive: name=value, separated by blanks.
std::string valuesAsText(const std::vector<DecodedValue>& values, std::size_t most);

// A value as programs read it: numbers, true and false, texts, arrays, objects, null for an optional without a value.
// The number of an enumeration is its name if it has one. Bytes are a text of two hexadecimal digits for each.
nlohmann::ordered_json valueAsJson(const DecodedValue& value);

// An object with all fields of an archive.
nlohmann::ordered_json valuesAsJson(const std::vector<DecodedValue>& values);

// "5 of which are not shown" as JSON has it: how many elements and bytes were left out, in all values together.
std::size_t omittedIn(const std::vector<DecodedValue>& values);

} // namespace monitor
