#pragma once

namespace DAX::DAXCommon {

// Where an upgrade comes from. Any int may arrive from the bus; only the named values have a meaning.
enum UpgradeType : int { UNDEFINED = 0, OTA = 1, OTN = 2, USB = 3, POSTPONE = 4 };

} // namespace DAX::DAXCommon
