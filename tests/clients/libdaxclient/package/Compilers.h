#pragma once

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "support/Process.h"

namespace DAX::Tests {

// The commands in the folders of a PATH that are a clang++ of whatever version, the one without a version first and
// then the newest first. A command that does not run counts as none.
inline std::vector<std::string> clangs(const std::string& path) {
    static const std::regex COMMAND("clang\\+\\+(-([0-9]{1,4}))?");
    const int FIRST = 10000;
    std::map<int, std::string, std::greater<>> byVersion;
    std::istringstream folders(path);
    for (std::string folder; std::getline(folders, folder, ':');) {
        std::error_code missing;
        for (const auto& entry : std::filesystem::directory_iterator(folder, missing)) {
            const std::string name = entry.path().filename().string();
            std::smatch parts;
            if (std::regex_match(name, parts, COMMAND) &&
                run({{entry.path().string(), "--version"}, {}, {}, {}}).end == ProcessEnd::exited(0)) {
                byVersion.emplace(parts[2].matched ? std::stoi(parts[2].str()) : FIRST, entry.path().string());
            }
        }
    }
    std::vector<std::string> found;
    for (const auto& [version, command] : byVersion) {
        found.push_back(command);
    }
    return found;
}

// The compilers that the examples are built with; clang only where it is installed.
inline std::vector<std::string> compilers() {
    std::vector<std::string> found{"g++"};
    const char* const path = std::getenv("PATH");
    const std::vector<std::string> others = clangs(path != nullptr ? path : "");
    if (!others.empty()) {
        found.push_back(others.front());
    }
    return found;
}

} // namespace DAX::Tests
