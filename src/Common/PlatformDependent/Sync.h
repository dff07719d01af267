#pragma once

#include <string>

namespace DAX::Common::PlatformDependent {

// Waits until the file's data is on its medium. Throws GenericException when the system refuses. Any thread.
void file_sync(int fd);

// Waits until the folder's entries are on their medium; only then is a new, renamed or removed file safe from a power
// cut. An empty text means the working directory. Throws GenericException when the system refuses. A file system that
// cannot synchronize a folder is no failure. Any thread.
void folder_sync(const std::string& folder);

// Writes the data of all file systems to their media, and waits for that. Cannot fail. Any thread.
void system_sync();

} // namespace DAX::Common::PlatformDependent
