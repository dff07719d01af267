#pragma once

namespace DAX::Common::Debug {

// True on production software. Fixed for the life of the process; any thread may ask.
bool isProduction();

} // namespace DAX::Common::Debug
