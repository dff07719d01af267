#include "host/Root.h"

#include <cstdlib>

#include <gtest/gtest.h>

using KovanHost::underRoot;

TEST(RootTest, PathsStandUnderTheFolderThatTheEnvironmentNames) {
    setenv("KOVAN_ROOT", "/some/root", 1);
    EXPECT_EQ("/some/root/etc/file", underRoot("etc/file"));
}

TEST(RootTest, EmptyOrUnsetMeansTheMachinesOwnRoot) {
    setenv("KOVAN_ROOT", "", 1);
    EXPECT_EQ("/etc/file", underRoot("etc/file"));
    unsetenv("KOVAN_ROOT");
    EXPECT_EQ("/etc/file", underRoot("etc/file"));
}
