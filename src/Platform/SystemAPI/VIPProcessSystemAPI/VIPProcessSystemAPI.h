#pragma once

namespace DAX::Platform::VIPProcessSystemAPI {

// Asks the device not to end this process when memory runs short. Best effort: a refusal is not seen.
void registerVIPProcess();

} // namespace DAX::Platform::VIPProcessSystemAPI
