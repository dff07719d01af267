#pragma once

#include <string>
#include <vector>

#include <boost/optional/optional_io.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/SystemAPI/USBSystemAPI/IUSBDeviceManager.h"
#include "Platform/SystemAPI/USBSystemAPI/USBAPIException.h"
#include "Platform/SystemAPI/USBSystemAPI/UsbDeviceInitializer.h"
#include "Utility/Utils/SingletonServiceGuard.h"
#include "support/DebugParameters.h"
#include "support/FakeKovan.h"
#include "support/ProcessDeath.h"
#include "support/TemporaryRoot.h"
#include "support/Thrown.h"

namespace DAX::Tests {

// The debug parameters are loaded, without a fake device. The journal is empty.
class USBDeviceFixture : public testing::Test {
protected:
    USBDeviceFixture() { FakeKovan::forgetRecords(); }

    static FakeKovan::UsbDevice device(const std::string& mountPath, const std::string& devname) {
        return {mountPath, devname, "S1", "Maker", "Stick", 1111, 2222};
    }

    const TemporaryRoot root{TemporaryRoot::SAME_FOR_ALL};
    DebugParameters parameters;
};

// The USB library is started, unless its start is set to fail.
class StartedUSBDeviceFixture : public USBDeviceFixture {
protected:
    StartedUSBDeviceFixture() { FakeKovan::forgetRecords(); }

    const Common::Utils::SingletonServiceGuard<Platform::UsbDeviceInitializer> started;
};

} // namespace DAX::Tests
