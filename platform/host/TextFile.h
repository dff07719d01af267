#pragma once

#include <optional>
#include <string>

namespace KovanHost {

// Small files that several processes, and people, read and write. Everything raises std::system_error with the path, or
// std::runtime_error with the path and the reason.

// More than any of them has use for; a file beyond it is refused instead of taken into memory.
constexpr std::size_t MOST_BYTES = 64 * 1024;

// The whole text; empty when there is no file.
std::optional<std::string> readText(const std::string& path);

// Readers see the file as it was before or after, even if the writer dies or the power fails; it is on its medium when
// this returns. The new text is written beside it, as PATH.new. One at a time for a file: hold its lock.
void replaceText(const std::string& path, const std::string& text);

// With the folders above it.
void makeFolderOf(const std::string& path);

// Held by one of all processes while it lives, at the latest until the process dies. `path` is a file of its own, which
// is made when it is absent, and stays.
class FileLock {
public:
    explicit FileLock(const std::string& path);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    int m_descriptor;
};

} // namespace KovanHost
