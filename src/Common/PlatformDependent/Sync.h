#pragma once

namespace DAX {
namespace Common {
namespace PlatformDependent {

// Returns when the file's data is on its medium. Throws GenericException when the system refuses.
void file_sync(int fd);

// Starts to bring all file systems' data to their media, and waits for it. Cannot fail.
void system_sync();

} // namespace PlatformDependent
} // namespace Common
} // namespace DAX
