#pragma once

namespace DAX::Common::Debug {

// True on production software. The answer is fixed for the life of the process. Any thread may call.
bool isProduction();

} // namespace DAX::Common::Debug
