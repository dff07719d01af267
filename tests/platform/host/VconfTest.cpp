#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <vconf.h>

#include "support/TemporaryRoot.h"

using DAX::Tests::TemporaryRoot;

namespace {

std::optional<std::string> textOf(const std::string& key) {
    const std::unique_ptr<char, decltype(&std::free)> text(vconf_get_str(key.c_str()), &std::free);
    return text == nullptr ? std::nullopt : std::optional<std::string>(text.get());
}

class VconfTest : public testing::Test {
protected:
    const TemporaryRoot m_root;
    int m_int = 17;
    double m_double = 1.5;
};

class VconfBadKeyTest : public VconfTest, public testing::WithParamInterface<std::string> {};

} // namespace

TEST_F(VconfTest, ReadsBackABool) {
    ASSERT_EQ(vconf_set_bool("db/key", 5), 0);

    EXPECT_EQ(vconf_get_bool("db/key", &m_int), 0);
    EXPECT_EQ(m_int, 1);

    ASSERT_EQ(vconf_set_bool("db/key", 0), 0);
    EXPECT_EQ(vconf_get_bool("db/key", &m_int), 0);
    EXPECT_EQ(m_int, 0);
}

TEST_F(VconfTest, ReadsBackAnInt) {
    ASSERT_EQ(vconf_set_int("memory/key", -2147483647 - 1), 0);

    EXPECT_EQ(vconf_get_int("memory/key", &m_int), 0);
    EXPECT_EQ(m_int, -2147483647 - 1);
}

TEST_F(VconfTest, ReadsBackADouble) {
    ASSERT_EQ(vconf_set_dbl("rtc/key", 0.1), 0);

    EXPECT_EQ(vconf_get_dbl("rtc/key", &m_double), 0);
    EXPECT_EQ(m_double, 0.1);
}

TEST_F(VconfTest, ReadsBackAString) {
    ASSERT_EQ(vconf_set_str("db/key", "some \xC5\x82 text\n"), 0);

    EXPECT_EQ(textOf("db/key"), "some \xC5\x82 text\n");
}

TEST_F(VconfTest, EmptyStringIsAValue) {
    ASSERT_EQ(vconf_set_str("db/key", ""), 0);

    EXPECT_EQ(textOf("db/key"), "");
}

TEST_F(VconfTest, MissingKeyFailsAndLeavesTheValueAlone) {
    ASSERT_EQ(vconf_set_int("db/other", 1), 0);

    EXPECT_NE(vconf_get_bool("db/key", &m_int), 0);
    EXPECT_NE(vconf_get_int("db/key", &m_int), 0);
    EXPECT_NE(vconf_get_dbl("db/key", &m_double), 0);
    EXPECT_EQ(vconf_get_str("db/key"), nullptr);
    EXPECT_EQ(m_int, 17);
    EXPECT_EQ(m_double, 1.5);
}

TEST_F(VconfTest, ReadingAsAnotherTypeFailsAndLeavesTheValueAlone) {
    ASSERT_EQ(vconf_set_int("db/int", 1), 0);
    ASSERT_EQ(vconf_set_bool("db/bool", 1), 0);

    EXPECT_NE(vconf_get_bool("db/int", &m_int), 0);
    EXPECT_NE(vconf_get_int("db/bool", &m_int), 0);
    EXPECT_NE(vconf_get_dbl("db/int", &m_double), 0);
    EXPECT_EQ(vconf_get_str("db/int"), nullptr);
    EXPECT_EQ(m_int, 17);
    EXPECT_EQ(m_double, 1.5);
}

TEST_F(VconfTest, WritingAsAnotherTypeChangesTheType) {
    ASSERT_EQ(vconf_set_int("db/key", 1), 0);
    ASSERT_EQ(vconf_set_str("db/key", "text"), 0);

    EXPECT_NE(vconf_get_int("db/key", &m_int), 0);
    EXPECT_EQ(textOf("db/key"), "text");
}

TEST_P(VconfBadKeyTest, EveryFunctionFails) {
    const char* const key = GetParam().c_str();

    EXPECT_NE(vconf_set_bool(key, 1), 0);
    EXPECT_NE(vconf_set_int(key, 1), 0);
    EXPECT_NE(vconf_set_dbl(key, 1), 0);
    EXPECT_NE(vconf_set_str(key, "text"), 0);
    EXPECT_NE(vconf_get_bool(key, &m_int), 0);
    EXPECT_NE(vconf_get_int(key, &m_int), 0);
    EXPECT_NE(vconf_get_dbl(key, &m_double), 0);
    EXPECT_EQ(vconf_get_str(key), nullptr);
    EXPECT_TRUE(std::filesystem::is_empty(m_root.path()));
}

INSTANTIATE_TEST_SUITE_P(BadKeys, VconfBadKeyTest,
                         testing::Values("", "key", "/db/key", "dbx/key", "database", "DB/key",
                                         "db/" + std::string(509, 'k'), "memory/" + std::string(100000, 'k')));

TEST_F(VconfTest, KeyOf511BytesIsTaken) {
    const std::string key = "db/" + std::string(508, 'k');

    EXPECT_EQ(vconf_set_int(key.c_str(), 3), 0);
    EXPECT_EQ(vconf_get_int(key.c_str(), &m_int), 0);
    EXPECT_EQ(m_int, 3);
}

TEST_F(VconfTest, NullKeysAndTextsFail) {
    EXPECT_NE(vconf_set_int(nullptr, 1), 0);
    EXPECT_NE(vconf_get_int(nullptr, &m_int), 0);
    EXPECT_NE(vconf_set_str("db/key", nullptr), 0);
    EXPECT_EQ(vconf_get_str(nullptr), nullptr);
}

TEST_F(VconfTest, ReadingMakesNoFolders) {
    EXPECT_NE(vconf_get_int("db/key", &m_int), 0);
    EXPECT_NE(vconf_get_int("memory/key", &m_int), 0);

    EXPECT_TRUE(std::filesystem::is_empty(m_root.path()));
}

TEST_F(VconfTest, DbAndRtcKeysStandUnderVarLib) {
    ASSERT_EQ(vconf_set_int("db/key", 1), 0);
    ASSERT_EQ(vconf_set_int("rtc/db/key", 1), 0);

    EXPECT_TRUE(std::filesystem::is_directory(m_root / "var/lib/kovan/settings"));
    EXPECT_FALSE(std::filesystem::exists(m_root / "run"));
}

TEST_F(VconfTest, MemoryKeysStandUnderRun) {
    ASSERT_EQ(vconf_set_int("memory/key", 1), 0);

    EXPECT_TRUE(std::filesystem::is_directory(m_root / "run/kovan/settings"));
    EXPECT_FALSE(std::filesystem::exists(m_root / "var"));
}

TEST_F(VconfTest, StoreThatAppearsAfterAFailedReadIsRead) {
    EXPECT_NE(vconf_get_int("db/key", &m_int), 0);
    ASSERT_EQ(vconf_set_int("db/key", 4), 0);

    EXPECT_EQ(vconf_get_int("db/key", &m_int), 0);
    EXPECT_EQ(m_int, 4);
}

TEST_F(VconfTest, RootThatCannotHoldFoldersFailsWrites) {
    m_root.write("file", "");
    setenv("KOVAN_ROOT", (m_root / "file").c_str(), 1);

    EXPECT_NE(vconf_set_int("db/key", 1), 0);
    EXPECT_NE(vconf_get_int("db/key", &m_int), 0);
}

TEST_F(VconfTest, ValueThatDoesNotFitFailsAndLeavesTheOldOne) {
    ASSERT_EQ(vconf_set_str("memory/key", "old"), 0);

    EXPECT_NE(vconf_set_str("memory/key", std::string(32u * 1024 * 1024, 'x').c_str()), 0);
    EXPECT_EQ(textOf("memory/key"), "old");
}

TEST_F(VconfTest, DamagedStoreFails) {
    m_root.write("var/lib/kovan/settings/data.mdb", std::string(8192, 'x'));

    EXPECT_NE(vconf_get_int("db/key", &m_int), 0);
    EXPECT_NE(vconf_set_int("db/key", 1), 0);
}

TEST_F(VconfTest, ThreadsShareTheStore) {
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([thread] {
            const std::string key = "memory/thread/" + std::to_string(thread);
            for (int i = 0; i < 100; ++i) {
                vconf_set_int(key.c_str(), i);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    for (int thread = 0; thread < 4; ++thread) {
        EXPECT_EQ(vconf_get_int(("memory/thread/" + std::to_string(thread)).c_str(), &m_int), 0);
        EXPECT_EQ(m_int, 99);
    }
}
