#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <boost/optional/optional_io.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Debug/DebugAndTestParameters/DAXParameters.h"
#include "Debug/DebugAndTestParameters/DebugAndTestParameters.h"
#include "Platform/ProductPaths/IProductPaths.h"
#include "support/DebugFile.h"
#include "support/FakeKovan.h"
#include "support/TemporaryRoot.h"

namespace DAX::Tests {

using DAXCommon::DebugAndTestParameters;

// `text` with its first `old` replaced; the test fails when there is none.
inline std::string replaced(std::string text, const std::string& old, const std::string& with) {
    const std::size_t position = text.find(old);
    EXPECT_NE(position, std::string::npos) << "no " << old;
    return position == std::string::npos ? text : text.replace(position, old.size(), with);
}

// A device without a debug file on its data partition, in a process that has not loaded the parameters.
class DebugFileFixture : public ::testing::Test {
protected:
    DebugFileFixture() {
        std::filesystem::create_directories(Platform::IProductPaths::getDAXPartitionPath().string());
        unload();
        FakeKovan::forgetRecords();
    }

    std::string path() const { return DebugAndTestParameters::getConfigFilePath(); }
    void write(const std::string& text) const { std::ofstream(path(), std::ios::binary) << text; }
    std::string written() const {
        std::ifstream file(path(), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }

    // The parameters as they are after the program's start with this file; the log is cleared.
    static DebugAndTestParameters& loaded() {
        DebugAndTestParameters::loadDebugAndTestParameters();
        FakeKovan::forgetRecords();
        return DebugAndTestParameters::getDebugAndTestParameters();
    }

    // The log lines for opening the file, and for a bad one.
    std::string opening() const { return "log INF Opening config from " + path(); }
    std::string failure(const std::string& what) const {
        return "log WRN Failed to load DebugAndTestParameters from " + path() + ": " + what;
    }

    const TemporaryRoot root{TemporaryRoot::SAME_FOR_ALL};

private:
    // All tests of a process share one record; reading a bad file makes it count as not loaded again.
    void unload() const {
        FakeKovan::setProduction(true);
        DebugAndTestParameters::getDebugAndTestParameters() = DebugAndTestParameters();
        FakeKovan::setProduction(false);
        if (DebugAndTestParameters::loaded()) {
            write("");
            DebugAndTestParameters::reload();
        }
        std::filesystem::remove(path());
    }
};

} // namespace DAX::Tests
