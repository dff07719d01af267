#pragma once

#include <string>

#include <boost/optional/optional_io.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Debug/DebugAndTestParameters/DebugAndTestParameters.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/ISystemControl.h"
#include "support/FakeKovan.h"
#include "support/ProcessDeath.h"
#include "support/TemporaryRoot.h"
#include "support/Thrown.h"

namespace DAX {
namespace Tests {

inline const std::string PARTITION = "mnt/systemrw/org.kovan.tv.dax/data/tv/";
inline const std::string BIG_TEMP = "bigtemp/org.kovan.tv.dax/data/tv/";
inline const std::string UPDATE_SETTINGS = "db/menu/support/softwareupdate/";
inline const std::string VOLATILE_UPDATE_SETTINGS = "memory/menu/support/softwareupdate/";

// A device with the debug parameters loaded, all of them at their defaults, and nothing recorded.
class SystemControlTest : public testing::Test {
protected:
    SystemControlTest() {
        std::filesystem::create_directories(root / PARTITION);
        std::filesystem::create_directories(root / BIG_TEMP);
        DAXCommon::DebugAndTestParameters::loadDebugAndTestParameters();
        parameters() = DAXCommon::DebugAndTestParameters();
        FakeKovan::forgetRecords();
    }

    static DAXCommon::DebugAndTestParameters& parameters() {
        return DAXCommon::DebugAndTestParameters::getDebugAndTestParameters();
    }

    // How the store tells of a failed access, in the journal.
    static std::string failedRead(const std::string& key) {
        return "log WRN vconf_get failed while trying to access key: " + key;
    }
    static std::string failedReadOr(const std::string& key) { return failedRead(key) + ", return default value"; }
    static std::string failedWrite(const std::string& key) {
        return "log WRN vconf_set failed while trying to access key: " + key;
    }

    // All that was logged at this level as one text: a diagnostic has many lines.
    static std::string told(const std::string& level) {
        std::string text;
        for (const std::string& message : FakeKovan::messages(level)) {
            text += message + "\n";
        }
        return text;
    }

    bool isThere(const std::string& relative) const { return std::filesystem::exists(root / relative); }

    const TemporaryRoot root{TemporaryRoot::SAME_FOR_ALL};
};

} // namespace Tests
} // namespace DAX
