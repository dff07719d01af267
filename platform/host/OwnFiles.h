#pragma once

#include <string>

#include <sys/types.h>

namespace KovanHost {

// The files and folders of the simulated device: their owner may write, their group may read, others may do nothing,
// whatever the umask of the process that makes them. What existed before keeps its mode.
constexpr mode_t FILE_MODE = 0640;
constexpr mode_t FOLDER_MODE = 0750;

// As open(), but makes the file when it does not exist. -1 with errno on failure.
int openOrMake(const std::string& path, int flags);

// As open() for a file that must not exist yet, not even as a link. -1 with errno on failure.
int makeNew(const std::string& path, int flags);

// Makes the folder and those above it. Returns 0 or the errno value.
int makeFolders(const std::string& folder);

// Writes the folder's entries to their medium. Returns 0 or the errno value.
int syncFolder(const std::string& folder);

// Owns a descriptor and closes it.
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
