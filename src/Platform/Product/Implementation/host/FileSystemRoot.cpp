#include "Platform/Product/Implementation/FileSystemRoot.h"

#include <cstdlib>

namespace DAX {
namespace Platform {

std::string fileSystemRoot() {
    const char* const root = std::getenv("KOVAN_ROOT");
    return root != nullptr ? root : "";
}

} // namespace Platform
} // namespace DAX
