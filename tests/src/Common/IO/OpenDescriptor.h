#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

#include <fcntl.h>

namespace DAX::Tests {

// Whether a program that this process starts gets the file, which is open here once. Throws when it is not open.
inline bool isInherited(const std::string& path) {
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone; // as the descriptor of this very listing is in the end
        if (std::filesystem::read_symlink(entry.path(), gone) == path) {
            return (fcntl(std::stoi(entry.path().filename()), F_GETFD) & FD_CLOEXEC) == 0;
        }
    }
    throw std::runtime_error(path + " is not open");
}

} // namespace DAX::Tests
