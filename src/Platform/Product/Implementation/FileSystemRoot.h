#pragma once

#include <string>

namespace DAX {
namespace Platform {

// What every path starts with; empty on the device. Each platform has its own source for it.
std::string fileSystemRoot();

} // namespace Platform
} // namespace DAX
