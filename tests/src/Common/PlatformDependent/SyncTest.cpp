#include "Common/PlatformDependent/Sync.h"

#include <cstdio>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/FakeKovan.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using Common::PlatformDependent::file_sync;
using Common::PlatformDependent::folder_sync;
using Common::PlatformDependent::system_sync;
using Common::Utils::errinfo_stream_text;

TEST(Sync, BringsAFileToItsMedium) {
    std::FILE* const file = std::tmpfile();
    EXPECT_NO_THROW(file_sync(fileno(file)));
    std::fclose(file);
}

TEST(Sync, ThrowsWhyAFileCannotBeSynchronized) {
    EXPECT_EQ(thrownText<errinfo_stream_text>([] { file_sync(-1); }), " errno=9 (Bad file descriptor)");
}

TEST(Sync, BringsTheEntriesOfAFolderToTheirMedium) {
    EXPECT_NO_THROW(folder_sync("/tmp"));
    EXPECT_NO_THROW(folder_sync(""));
}

TEST(Sync, ThrowsWhyAFolderCannotBeSynchronized) {
    EXPECT_EQ(thrownText<errinfo_stream_text>([] { folder_sync("/absent"); }), " errno=2 (No such file or directory)");
    EXPECT_EQ(thrownText<errinfo_stream_text>([] { folder_sync("/dev/null"); }), " errno=20 (Not a directory)");
}

TEST(Sync, LogsAndSynchronizesAllFileSystems) {
    system_sync();
    EXPECT_THAT(FakeKovan::journal(), testing::ElementsAre("log INF Performing 'sync'.", "sync"));
}

} // namespace
} // namespace DAX::Tests

// The tests do not wait for the machine's disks. NOLINTNEXTLINE(bugprone-reserved-identifier): the name is the linker's
extern "C" void __wrap_sync() {
    FakeKovan::note("sync");
}
