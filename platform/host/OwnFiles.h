#pragma once

#include <string>

#include <sys/types.h>

namespace KovanHost {

// The files and folders of the simulated device: their owner's to write, their group's to read, and nobody else's,
// whatever the umask of the process that makes them. What was there before keeps its mode.
constexpr mode_t FILE_MODE = 0640;
constexpr mode_t FOLDER_MODE = 0750;

// As open(), with the file made when it is not there; -1 with errno.
int openOrMake(const std::string& path, int flags);

// As open() for a file that must not be there yet, not even as a link; -1 with errno.
int makeNew(const std::string& path, int flags);

// Makes the folder and those above it. 0, or errno's value.
int makeFolders(const std::string& folder);

// Takes the folder's entries to their medium. 0, or errno's value.
int syncFolder(const std::string& folder);

// Closes what it holds.
class Descriptor {
public:
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor();
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    operator int() const { return m_number; }

private:
    int m_number;
};

} // namespace KovanHost
