#pragma once

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/SystemAPI/SystemInfoSystemAPI/ISystemInfo.h"
#include "Platform/SystemAPI/VconfSystemAPI/VConfException.h"
#include "support/FakeKovan.h"
#include "support/Thrown.h"

namespace DAX::Tests {

inline const std::string UPDATE_SETTINGS = "db/menu/support/softwareupdate/";
inline const std::string VOLATILE_UPDATE_SETTINGS = "memory/menu/support/softwareupdate/";

// The journal's entry for a failed access to the store.
inline std::string failedRead(const std::string& key) {
    return "log WRN vconf_get failed while trying to access key: " + key;
}
inline std::string failedReadOr(const std::string& key) {
    return failedRead(key) + ", return default value";
}
inline std::string failedWrite(const std::string& key) {
    return "log WRN vconf_set failed while trying to access key: " + key;
}

// A text setting of the store after a write.
inline std::string textSetting(const std::string& key) {
    const auto value = FakeKovan::setting(key);
    return value ? std::get<std::string>(*value) : "<no setting>";
}

} // namespace DAX::Tests
