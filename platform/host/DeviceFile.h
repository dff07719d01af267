#pragma once

#include <functional>
#include <optional>
#include <string>

#include "DeviceFacts.h"
#include "KeyFile.h"

namespace KovanHost {

// The content of the device file: etc/kovan/device.ini under the root, a GLib key file of at most 64 KiB. It is read at
// each call, so that a change is seen at once; callers keep what must not change during the life of a process. Any
// thread may call.
//
// A bad file counts as absent. That is reported once on standard error, with the path, the number of the line and the
// reason, and not again until the file is good or bad for another reason. A value of the wrong type is reported in the
// same way; the rest of the file stays in force. GLib is not called while there is no file.

std::string devicePath();

// The value of a fact that has a name: the one in the file, or the default, also when the file has a value of the wrong
// type.
FactValue valueOf(const DeviceFact& fact);

// The same for a fact of deviceFacts() that has the type T.
template <class T>
T factOf(const char* group, const char* name) {
    return std::get<T>(valueOf(*findFact(group, name)));
}

// The result of asking the platform for a fact; see resultFact().
int resultOf(const std::string& group, const std::string& name);

// A value of the file as bool, int or std::string; empty when the file does not have it. Throws std::runtime_error,
// after a report, when the value is of another type.
template <class T>
std::optional<T> givenValue(const std::string& group, const std::string& name);

// For tools. Throws std::runtime_error with the path and the reason for a bad file.
KeyFile loadDevice();

// Changes the file; makes it and its folder when they do not exist. Changes come one after another, whichever process
// makes them. Readers see the file as it was before or after, even if the writer dies. Throws std::system_error when
// the file cannot be written.
void changeDevice(const std::function<void(KeyFile&)>& change);

// Writes defaultDeviceText(). Throws std::runtime_error with the path when there is a file already, unless it is to be
// replaced.
void writeDefaultDevice(bool evenOverAnother);

} // namespace KovanHost
