#pragma once

#include <map>
#include <string>
#include <variant>

namespace KovanHost {

// The settings store behind vconf_*, and what tools need in addition: removal and listing.
//
// It consists of two LMDB environments under the root, which several processes use at once. Keys under "db/" and "rtc/"
// are in var/lib/kovan/settings and on the disk when a write returns. Keys under "memory/" are in run/kovan/settings,
// which a reboot empties, and are not synced. The first write makes the folders.
//
// Every function returns 0 or an error that describeSettingsError() puts into words: a key that does not exist, is
// empty, has more than 511 bytes or no known prefix, or a store that cannot be reached. Any thread may call. A store is
// opened at its first use in a process; a forked child opens its own.
using SettingsValue = std::variant<bool, int, double, std::string>;

int getSetting(const std::string& key, SettingsValue& value);
int setSetting(const std::string& key, const SettingsValue& value);
int unsetSetting(const std::string& key);

// Adds the settings whose keys begin with `prefix`. A store that was never written to has none.
int listSettings(const std::string& prefix, std::map<std::string, SettingsValue>& settings);

std::string describeSettingsError(int error);

} // namespace KovanHost
