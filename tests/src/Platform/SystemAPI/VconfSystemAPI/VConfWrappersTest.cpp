#include "Platform/SystemAPI/VconfSystemAPI/VConfWrappers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/FakeKovan.h"

using namespace DAX::Platform;
using testing::ElementsAre;

namespace {

const char* const KEY = "db/a/key";

TEST(VConfBoolWrapperTest, ReadsBothValues) {
    bool value = false;
    FakeKovan::setSetting(KEY, true);
    EXPECT_EQ(vconf_get_bool_wrapper(KEY, &value), 0);
    EXPECT_TRUE(value);

    FakeKovan::setSetting(KEY, false);
    EXPECT_EQ(vconf_get_bool_wrapper(KEY, &value), 0);
    EXPECT_FALSE(value);
}

TEST(VConfBoolWrapperTest, WritesFalseToTheOutputWhenTheReadFails) {
    bool value = true;
    FakeKovan::failReads(KEY, -5);

    EXPECT_EQ(vconf_get_bool_wrapper(KEY, &value), -5);
    EXPECT_FALSE(value);
}

TEST(VConfBoolWrapperTest, WritesTheValueAndReturnsTheStoresResult) {
    EXPECT_EQ(vconf_set_bool_wrapper(KEY, true), 0);
    EXPECT_EQ(vconf_set_bool_wrapper(KEY, false), 0);
    EXPECT_THAT(FakeKovan::writes(), ElementsAre(FakeKovan::Write{KEY, true}, FakeKovan::Write{KEY, false}));

    FakeKovan::failWrites(KEY, -5);
    EXPECT_EQ(vconf_set_bool_wrapper(KEY, true), -5);
}

TEST(VConfStringWrapperTest, ReplacesTheWholeOutput) {
    std::string value = "a much longer text than the stored one";
    FakeKovan::setSetting(KEY, "new");

    EXPECT_EQ(vconf_get_string_wrapper(KEY, &value), 0);
    EXPECT_EQ(value, "new");
}

TEST(VConfStringWrapperTest, LeavesTheOutputAsItWasWithoutAText) {
    std::string value = "old";

    EXPECT_EQ(vconf_get_string_wrapper(KEY, &value), -1);
    EXPECT_EQ(value, "old");
}

TEST(VConfStringWrapperTest, WritesTheTextAndReturnsTheStoresResult) {
    EXPECT_EQ(vconf_set_string_wrapper(KEY, "text"), 0);
    EXPECT_THAT(FakeKovan::writes(), ElementsAre(FakeKovan::Write{KEY, std::string("text")}));

    FakeKovan::failWrites(KEY, -5);
    EXPECT_EQ(vconf_set_string_wrapper(KEY, "text"), -5);
}

} // namespace
