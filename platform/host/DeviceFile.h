#pragma once

#include <string>

namespace KovanHost {

// The facts of the simulated device: the GLib key file etc/kovan/device.ini under the root.
// Where the file, the group or the key is absent, the fallback holds. A file or a value that cannot be read is told on
// standard error, with its path and the reason, and the fallback holds there too. The file is read at each call;
// callers keep what is fixed for the life of a process. GLib is not called when there is no file.
bool deviceFlag(const char* group, const char* key, bool fallback);
std::string deviceText(const char* group, const char* key, const std::string& fallback);

} // namespace KovanHost
