#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include <boost/optional/optional_io.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Debug/DebugAndTestParameters/DebugAndTestParameters.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/ISystemControl.h"
#include "support/FakeKovan.h"
#include "support/ProcessDeath.h"
#include "support/TemporaryRoot.h"
#include "support/Thrown.h"

namespace DAX::Tests {

inline const std::string PARTITION = "mnt/systemrw/org.kovan.tv.dax/data/tv/";
inline const std::string BIG_TEMP = "bigtemp/org.kovan.tv.dax/data/tv/";
inline const std::string UPDATE_SETTINGS = "db/menu/support/softwareupdate/";
inline const std::string VOLATILE_UPDATE_SETTINGS = "memory/menu/support/softwareupdate/";
inline const char B2B_FEATURE[] = "com.velmora/featureconf/product.b2b_option_support";
inline const char PRODUCT_TYPE_FEATURE[] = "com.velmora/featureconf/product.product_type";

// A device whose debug parameters are loaded and have their defaults. The journal is empty.
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

    // Makes it a television on which the user decides about updates.
    static void makeTelevision() {
        FakeKovan::setSystemInfo(B2B_FEATURE, false);
        FakeKovan::setSystemInfo(PRODUCT_TYPE_FEATURE, 0);
    }

    // The journal's entry for a failed access to the store.
    static std::string failedRead(const std::string& key) {
        return "log WRN vconf_get failed while trying to access key: " + key;
    }
    static std::string failedReadOr(const std::string& key) { return failedRead(key) + ", return default value"; }
    static std::string failedWrite(const std::string& key) {
        return "log WRN vconf_set failed while trying to access key: " + key;
    }

    // The first entries of the journal. They may end within a diagnostic text.
    static std::vector<std::string> beginning(std::size_t size) {
        std::vector<std::string> entries = FakeKovan::journal();
        entries.resize(std::min(size, entries.size()));
        return entries;
    }

    // All that was logged at this level, as one text, since a diagnostic has many lines.
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

} // namespace DAX::Tests
