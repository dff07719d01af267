#pragma once

namespace DAX::Platform {

// The result of the verification of an external application. The numbers are those in the settings store.
enum class ExternalAppVerificationResult : int { NONE = 0, PENDING = 1, ACCEPTED = 2, REJECTED = 3 };

} // namespace DAX::Platform
