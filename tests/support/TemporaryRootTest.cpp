#include "support/TemporaryRoot.h"

#include <cstdlib>

#include <gtest/gtest.h>

using DAX::Tests::TemporaryRoot;

TEST(TemporaryRootTest, IsTheRootWhileItLives) {
    setenv("KOVAN_ROOT", "/before", 1);
    {
        const TemporaryRoot root;
        EXPECT_EQ(root.path().string(), std::getenv("KOVAN_ROOT"));
        EXPECT_TRUE(std::filesystem::is_directory(root.path()));
    }
    EXPECT_STREQ(std::getenv("KOVAN_ROOT"), "/before");
}

TEST(TemporaryRootTest, WritesAndReadsFilesUnderItAndRemovesThem) {
    std::filesystem::path path;
    {
        const TemporaryRoot root;
        path = root.path();
        root.write("a/b/file", "text");
        EXPECT_EQ(root.read("a/b/file"), "text");
        EXPECT_EQ(root.read("absent"), "");
    }
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(TemporaryRootTest, MayHaveTheSamePathAgain) {
    const auto make = [] { return TemporaryRoot(TemporaryRoot::SAME_FOR_ALL).path(); };
    const std::filesystem::path path = make();
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_EQ(make(), path);
    EXPECT_NE(TemporaryRoot().path(), path);
}
