#pragma once

#include <string>

#include <boost/optional/optional_io.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/SystemAPI/FactorySystemAPI/IFactorySettings.h"
#include "support/DebugParameters.h"
#include "support/FakeKovan.h"
#include "support/TemporaryRoot.h"
#include "support/Thrown.h"

namespace DAX::Tests {

// The debug parameters are loaded and override nothing, the factory menu is empty, and the journal is empty.
class FactorySettingsFixture : public testing::Test {
protected:
    FactorySettingsFixture() { FakeKovan::forgetRecords(); }

    // The journal's entry for a default. A value that was read from the factory menu leaves no entry.
    static std::string toldByDefault(const std::string& key, const std::string& name, int value) {
        return "log INF Failed to fetch key " + key + " (" + name +
               ") from factory menu. Default value will be used: " + std::to_string(value);
    }

    const TemporaryRoot root{TemporaryRoot::SAME_FOR_ALL};
    DebugParameters parameters;
};

} // namespace DAX::Tests
