#pragma once

#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "support/TemporaryRoot.h"

namespace DAX::Tests {

// What `action` writes to standard error.
inline std::string errorsOf(const std::function<void()>& action) {
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

// Works on a simulated device of the test's own, with a device file.
class DeviceTest : public testing::Test {
protected:
    void device(const std::string& text) const { m_root.write("etc/kovan/device.ini", text); }
    std::string path() const { return (m_root / "etc/kovan/device.ini").string(); }

    const TemporaryRoot m_root;
};

} // namespace DAX::Tests
