#include <csignal>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>
#include <vconf.h>

#include "host/Root.h"
#include "host/SettingsTransaction.h"
#include "support/ForkedProcess.h"
#include "support/TemporaryRoot.h"

using DAX::Tests::ForkedProcess;
using DAX::Tests::TemporaryRoot;

namespace {

constexpr int WRITERS = 4;
constexpr int WRITES = 200;
constexpr int READER_PLACES = 126; // LMDB's default

std::string keyOf(int writer, int number) {
    return "db/writer" + std::to_string(writer) + "/" + std::to_string(number);
}

int writeAll(int writer) {
    for (int number = 0; number < WRITES; ++number) {
        if (vconf_set_int(keyOf(writer, number).c_str(), number) != 0) {
            return 1;
        }
    }
    return 0;
}

int inMemoryStore(unsigned int flags, const KovanHost::SettingsWork& work) {
    return KovanHost::inSettingsTransaction(KovanHost::underRoot("run/kovan/settings"),
                                            KovanHost::Durability::NOT_SYNCED, flags, work);
}

class SettingsProcessesTest : public testing::Test {
protected:
    const TemporaryRoot m_root;
    int m_value = -1;
};

} // namespace

TEST_F(SettingsProcessesTest, ConcurrentWritersLoseNothing) {
    std::vector<std::unique_ptr<ForkedProcess>> writers;
    for (int writer = 0; writer < WRITERS; ++writer) {
        writers.push_back(std::make_unique<ForkedProcess>([writer] { return writeAll(writer); }));
    }
    for (const auto& writer : writers) {
        ASSERT_EQ(writer->wait(), 0);
    }

    for (int writer = 0; writer < WRITERS; ++writer) {
        for (int number = 0; number < WRITES; ++number) {
            ASSERT_EQ(vconf_get_int(keyOf(writer, number).c_str(), &m_value), 0) << keyOf(writer, number);
            ASSERT_EQ(number, m_value);
        }
    }
}

TEST_F(SettingsProcessesTest, SettingsOutliveTheirWriter) {
    ForkedProcess writer([] { return vconf_set_str("db/key", "text") + vconf_set_int("memory/key", 6); });
    ASSERT_EQ(writer.wait(), 0);

    const std::unique_ptr<char, decltype(&std::free)> text(vconf_get_str("db/key"), &std::free);
    EXPECT_STREQ(text.get(), "text");
    EXPECT_EQ(vconf_get_int("memory/key", &m_value), 0);
    EXPECT_EQ(m_value, 6);
}

TEST_F(SettingsProcessesTest, ChildUsesTheStoreThatItsParentHasOpen) {
    ASSERT_EQ(vconf_set_int("db/parent", 1), 0);
    ForkedProcess child([this] {
        return vconf_get_int("db/parent", &m_value) == 0 && vconf_set_int("db/child", 2) == 0 ? m_value : 0;
    });
    EXPECT_EQ(child.wait(), 1);

    EXPECT_EQ(vconf_get_int("db/child", &m_value), 0);
    EXPECT_EQ(m_value, 2);
    EXPECT_EQ(vconf_set_int("db/parent", 3), 0);
}

TEST_F(SettingsProcessesTest, WriterThatDiesInsideItsTransactionLeavesTheStoreAsItWas) {
    ASSERT_EQ(vconf_set_int("memory/key", 1), 0);
    ForkedProcess writer([] {
        return inMemoryStore(0, [](MDB_txn* transaction, MDB_dbi database) {
            mdb_drop(transaction, database, 0);
            return raise(SIGKILL);
        });
    });
    EXPECT_EQ(writer.wait(), -1);

    EXPECT_EQ(vconf_get_int("memory/key", &m_value), 0);
    EXPECT_EQ(m_value, 1);
    EXPECT_EQ(vconf_set_int("memory/key", 2), 0);
}

TEST_F(SettingsProcessesTest, DeadReadersInEveryPlaceDoNotShutOutTheLiving) {
    ASSERT_EQ(vconf_set_int("memory/key", 1), 0);
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    std::vector<std::unique_ptr<ForkedProcess>> readers;
    for (int place = 0; place < READER_PLACES; ++place) {
        readers.push_back(std::make_unique<ForkedProcess>([&ready] {
            return inMemoryStore(MDB_RDONLY,
                                 [&ready](MDB_txn*, MDB_dbi) { return write(ready[1], "r", 1) == 1 ? pause() : 1; });
        }));
        char byte;
        ASSERT_EQ(read(ready[0], &byte, 1), 1);
    }
    EXPECT_NE(vconf_get_int("memory/key", &m_value), 0);

    readers.clear();

    EXPECT_EQ(vconf_get_int("memory/key", &m_value), 0);
    EXPECT_EQ(m_value, 1);
    close(ready[0]);
    close(ready[1]);
}
