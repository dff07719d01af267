#pragma once

#include <chrono>

#include "support/Sanitizer.h"

namespace DAX::Tests {

// Within what a call returns that nothing holds up.
constexpr std::chrono::seconds PROMPT{HAS_SANITIZER ? 10 : 1};

} // namespace DAX::Tests
