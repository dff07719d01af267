#include "Platform/Product/Implementation/FileSystemRoot.h"

namespace DAX {
namespace Platform {

std::string fileSystemRoot() {
    return std::string();
}

} // namespace Platform
} // namespace DAX
