#include "Platform/OperatingSystem/OSProcess.h"

#include <cstdlib>

#include <gtest/gtest.h>

namespace DAX::Tests {
namespace {

TEST(OSProcess, NoKeyIsEverPressed) {
    EXPECT_EQ(Platform::wasAnyKeyPressed(), std::make_pair(false, 0));
}

TEST(OSProcess, CallExitEndsTheProcessWithoutItsExitHandlers) {
    EXPECT_EXIT(
        {
            std::atexit([] { std::_Exit(1); });
            Platform::callExit();
        },
        ::testing::ExitedWithCode(143), "^$");
}

} // namespace
} // namespace DAX::Tests
