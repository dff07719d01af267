#include "Root.h"

#include <cstdlib>

namespace KovanHost {

std::string underRoot(const std::string& relative) {
    const char* const root = std::getenv("KOVAN_ROOT");
    return std::string(root == nullptr ? "" : root) + "/" + relative;
}

} // namespace KovanHost
