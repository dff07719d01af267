#include "Debug/DebugCommon/ConsolePosition.h"

#include <gtest/gtest.h>

#include "support/FakeKovan.h"

namespace Debug = DAX::Common::Debug;

TEST(ConsolePositionTest, IsNeitherSavedNorRestored) {
    Debug::SaveConsolePosition("DAXServiceConsole");
    Debug::RestoreConsolePosition("DAXServiceConsole");

    EXPECT_TRUE(FakeKovan::journal().empty());
    EXPECT_TRUE(FakeKovan::reads().empty());
}
