#pragma once

namespace DAX::Platform {

// What the verification of an external application came to, as the settings store numbers it.
enum class ExternalAppVerificationResult : int { NONE = 0, PENDING = 1, ACCEPTED = 2, REJECTED = 3 };

} // namespace DAX::Platform
