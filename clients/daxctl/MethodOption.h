#pragma once

#include <string>

#include "DAXIPC/DBUSLowLevel/Decoder/MethodDescription.h"

namespace daxctl {

// The method of this side that the user has named. Throws WrongUsage, which proposes the nearest, when there is none.
const DAX::DAXIPC::DBUSLowLevel::MethodDescription& methodNamed(DAX::DAXIPC::DBUSLowLevel::Side side,
                                                                const std::string& name);

} // namespace daxctl
