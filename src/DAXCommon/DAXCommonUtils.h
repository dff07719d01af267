#pragma once

#include <string>
#include <vector>

#include <boost/optional.hpp>

#include "DAXCommon/UpgradeType.h"

namespace DAX::DAXCommon {

// Text functions that the programs of the update stack share. They keep no state; any thread may call them.
namespace DAXCommonUtils {

// "OTA", "OTN", "USB" or "POSTPONE". Any other type, UNDEFINED included, fails an assertion.
std::string upgradeTypeToString(UpgradeType type);

// A progress value as one text: 42, or 42|3.5 with a detail. The detail keeps six significant digits.
std::string packStandaloneProgressValue(int progress, boost::optional<float> detail);

// Reads such a text; `detail` becomes empty when the text has none. False, with a log line, when the text has another
// form; both values are then left as they were.
bool unpackStandaloneProgressValue(const std::string& text, int& progress, boost::optional<float>& detail);

// The numbers before and after the first point; without a point, the minor number is 0. Throws boost::bad_lexical_cast
// when either is not an int, and leaves both as they were.
void parseVersion(const std::string& version, int& major, int& minor);

// Splits "MODEL-MAJOR.MINOR" at its last dash. Only the low 16 bits of a number are kept. False, with a log line, when
// there is no dash. Throws what parseVersion throws; the model is set then, the numbers are not.
bool parsedModelAndVersion(const std::string& text, std::string& model, unsigned short& major, unsigned short& minor);

// What users see of a version: its major number only. Throws what parseVersion throws.
std::string versionStringForUI(const std::string& version);

// The CRC-32 of the bytes in eight lower-case hexadecimal digits, the lowest byte of the sum first.
std::string calculateCrcString(const unsigned char* data, unsigned long size);

// The identifier of the transaction that brings the upgrade with this identifier: its CRC string.
std::string getTransactionIdForUpgrade(const std::vector<unsigned char>& bytes);

} // namespace DAXCommonUtils

} // namespace DAX::DAXCommon
