#pragma once

namespace DAX::Platform::VIPProcessSystemAPI {

// Asks the device not to end this process when memory runs short. Whether it agrees is not looked at. Any thread may
// call.
void registerVIPProcess();

} // namespace DAX::Platform::VIPProcessSystemAPI
