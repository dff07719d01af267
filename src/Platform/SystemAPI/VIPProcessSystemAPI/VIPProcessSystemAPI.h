#pragma once

namespace DAX {
namespace Platform {
namespace VIPProcessSystemAPI {

// Asks the device not to end this process when memory runs short. Best effort: a refusal is not seen.
void registerVIPProcess();

} // namespace VIPProcessSystemAPI
} // namespace Platform
} // namespace DAX
