#include "host/Root.h"

#include <cstdlib>

#include <gtest/gtest.h>

using KovanHost::underRoot;

TEST(RootTest, PathsStandUnderTheFolderThatTheEnvironmentNames) {
    setenv("KOVAN_ROOT", "/some/root", 1);
    EXPECT_EQ(underRoot("etc/file"), "/some/root/etc/file");
}

TEST(RootTest, EmptyOrUnsetMeansTheMachinesOwnRoot) {
    setenv("KOVAN_ROOT", "", 1);
    EXPECT_EQ(underRoot("etc/file"), "/etc/file");
    unsetenv("KOVAN_ROOT");
    EXPECT_EQ(underRoot("etc/file"), "/etc/file");
}
