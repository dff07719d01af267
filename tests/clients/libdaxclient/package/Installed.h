#pragma once

#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/Process.h"
#include "support/TemporaryRoot.h"

namespace DAX::Tests {

// A command that must succeed; its output.
inline std::string outputOf(const std::vector<std::string>& line,
                            const std::map<std::string, std::optional<std::string>>& environment = {}) {
    const FinishedRun finished = run({line, environment, {}, {}}, std::chrono::seconds(250));
    EXPECT_EQ(finished.end, ProcessEnd::exited(0)) << line.front() << ": " << finished.output << finished.errors;
    return finished.output;
}

inline std::string textOf(const std::filesystem::path& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

// The component of the client, installed, and then moved: it must not know where it is.
class Installed {
public:
    Installed() {
        outputOf({CMAKE_PROGRAM, "--install", BUILD_FOLDER, "--component", "client", "--prefix",
                  (m_root / "first").string()});
        std::filesystem::rename(m_root / "first", prefix());
    }

    std::filesystem::path prefix() const { return m_root / "prefix"; }
    std::filesystem::path root() const { return m_root.path(); }

    // The folder of the installed file.
    std::filesystem::path folderOf(const std::string& file) const {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(prefix())) {
            if (entry.path().filename() == file) {
                return entry.path().parent_path();
            }
        }
        ADD_FAILURE() << file << " is not installed";
        return {};
    }

private:
    TemporaryRoot m_root;
};

} // namespace DAX::Tests
