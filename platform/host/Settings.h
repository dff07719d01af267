#pragma once

#include <map>
#include <string>
#include <variant>

namespace KovanHost {

// The settings store behind vconf_*, with what a person's tool needs besides: removal and listing.
//
// Two LMDB environments under the root, which several processes use at once. Keys under "db/" and "rtc/" stand in
// var/lib/kovan/settings and are on the disk when a write returns; keys under "memory/" stand in run/kovan/settings,
// which is gone after a reboot, and are not synced. The folders are made by the first write.
//
// Everything returns 0 or an error that is told by describeSettingsError(): a key that is absent, empty, longer than
// 511 bytes or of no known prefix, a store that cannot be reached. Any thread may call. A store is opened at its first
// use in a process; a forked child opens its own.
using SettingsValue = std::variant<bool, int, double, std::string>;

int getSetting(const std::string& key, SettingsValue& value);
int setSetting(const std::string& key, const SettingsValue& value);
int unsetSetting(const std::string& key);

// Adds the settings whose keys begin with `prefix`. A store that nothing was written to yet holds none.
int listSettings(const std::string& prefix, std::map<std::string, SettingsValue>& settings);

std::string describeSettingsError(int error);

} // namespace KovanHost
