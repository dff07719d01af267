#pragma once

#include <chrono>

#include "support/Sanitizer.h"

namespace DAX::Tests {

// The time within which a call returns when nothing holds it up.
constexpr std::chrono::seconds PROMPT{HAS_SANITIZER ? 10 : 1};

} // namespace DAX::Tests
