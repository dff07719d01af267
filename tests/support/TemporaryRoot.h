#pragma once

#include <filesystem>
#include <string>

namespace DAX::Tests {

// A temporary folder that is the device's root while the object lives. KOVAN_ROOT names it, so that the test's own
// calls of the platform, and every program that it starts, work under it. The destructor removes the folder with its
// content and restores KOVAN_ROOT. One at a time in a process. Throws std::system_error when the folder cannot be made.
class TemporaryRoot {
public:
    TemporaryRoot();
    enum SameForAll { SAME_FOR_ALL };

    // All roots that one process makes in this way, one after the other, have the same path. For tests of code that
    // keeps a path for the life of the process.
    explicit TemporaryRoot(SameForAll);

    ~TemporaryRoot();
    TemporaryRoot(const TemporaryRoot&) = delete;
    TemporaryRoot& operator=(const TemporaryRoot&) = delete;

    const std::filesystem::path& path() const { return m_path; }

    // A path under the root; `relative` does not begin with "/".
    std::filesystem::path operator/(const std::string& relative) const { return m_path / relative; }

    // Writes a file under the root, with the folders above it.
    void write(const std::string& relative, const std::string& text) const;

    // The whole text of a file under the root; empty when there is none.
    std::string read(const std::string& relative) const;

private:
    explicit TemporaryRoot(std::filesystem::path path);

    std::filesystem::path m_path;
    std::string m_previousRoot;
};

} // namespace DAX::Tests
