#pragma once

#include <functional>
#include <optional>
#include <string>

#include "DeviceFacts.h"
#include "KeyFile.h"

namespace KovanHost {

// What the device file tells: etc/kovan/device.ini under the root, a GLib key file of at most 64 KiB. It is read at
// each call, so that a change is seen at once; callers keep what is fixed for the life of a process. Any thread may
// call.
//
// A file that is bad counts as absent. That is told once on standard error, with the path, the number of the line and
// the reason, and not again before the file is good or bad for another reason. So is a value of the wrong type, and the
// rest of the file holds. GLib is not called while there is no file.

std::string devicePath();

// What holds for a fact that is known by name: what the file gives, or the default, also for a value of the wrong type.
FactValue valueOf(const DeviceFact& fact);

// The same, for a fact of deviceFacts() of the type T.
template <class T>
T factOf(const char* group, const char* name) {
    return std::get<T>(valueOf(*findFact(group, name)));
}

// What the question for a fact results in: as in resultFact().
int resultOf(const std::string& group, const std::string& name);

// What the file gives as bool, int or std::string; empty when it gives nothing. std::runtime_error, after it was told,
// when the value is of another type.
template <class T>
std::optional<T> givenValue(const std::string& group, const std::string& name);

// For tools. A bad file raises std::runtime_error with the path and the reason.
KeyFile loadDevice();

// Changes the file, and makes it and its folder when they are absent. One change after another, whichever process makes
// it; readers see the file as it was before or after, even if the writer dies. std::system_error when it cannot be
// written.
void changeDevice(const std::function<void(KeyFile&)>& change);

// Writes defaultDeviceText(). std::runtime_error with the path when there is a file already, unless it shall be
// replaced.
void writeDefaultDevice(bool evenOverAnother);

} // namespace KovanHost
