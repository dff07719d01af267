#pragma once

#include <optional>
#include <string>

namespace KovanHost {

// Small files that several processes, and people, read and write. Failures throw std::system_error with the path, or
// std::runtime_error with the path and the reason.

// No such file needs more. A larger one is refused instead of read into memory.
constexpr std::size_t MOST_BYTES = std::size_t{64} * 1024;

// The complete text; empty when there is no file.
std::optional<std::string> readText(const std::string& path);

// Replaces the text. Readers see the file as it was before or after, even if the writer dies or the power fails; it is
// on its medium when this returns. The new text is first written to PATH.new. Only one at a time for a file: hold its
// lock.
void replaceText(const std::string& path, const std::string& text);

// Makes the folder and those above it.
void makeFolderOf(const std::string& path);

// A lock that only one process holds at a time, while this object lives; it ends with the process at the latest. `path`
// is a file just for the lock, which is made when it does not exist, and stays.
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
