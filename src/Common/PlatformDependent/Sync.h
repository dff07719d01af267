#pragma once

#include <string>

namespace DAX::Common::PlatformDependent {

// Returns when the file's data is on its medium. Throws GenericException when the system refuses.
void file_sync(int fd);

// Returns when the folder's entries are on their medium: a new, renamed or removed file is so for good only then. The
// empty text is the working directory. Throws GenericException when the system refuses; a file system that has no way
// to do it is no failure.
void folder_sync(const std::string& folder);

// Starts to bring all file systems' data to their media, and waits for it. Cannot fail.
void system_sync();

} // namespace DAX::Common::PlatformDependent
