#include "kvplatform.h"

#include "support/ForkedProcess.h"
#include "support/TemporaryRoot.h"

#include <gmock/gmock.h>

using DAX::Tests::ForkedProcess;
using DAX::Tests::TemporaryRoot;

namespace {

// The directories are read once in a process, so each question is asked in a process of its own.
class KvplatformTest : public testing::Test {
protected:
    static bool isAt(int directory, const std::string& path) {
        ForkedProcess process([=] {
            const char* const answer = kvplatform_getenv(directory);
            return answer != nullptr && answer == path ? 1 : 0;
        });
        return process.wait() == 1;
    }

    void device(const std::string& text) const { m_root.write("etc/kovan/device.ini", text); }

    const TemporaryRoot m_root;
};

} // namespace

TEST_F(KvplatformTest, KnowsTheUsualDirectories) {
    EXPECT_TRUE(isAt(3, "/usr/share"));
    EXPECT_TRUE(isAt(6, "/usr/lib"));
    EXPECT_TRUE(isAt(7, "/usr/bin"));
    EXPECT_TRUE(isAt(10, "/mnt/usb"));
    EXPECT_TRUE(isAt(27, "/mnt/temporary"));
    EXPECT_TRUE(isAt(28, "/usr/apps"));
}

TEST_F(KvplatformTest, KnowsNoOther) {
    for (const int directory : {-1, 0, 29}) {
        ForkedProcess process([=] { return kvplatform_getenv(directory) == nullptr ? 1 : 0; });
        EXPECT_EQ(process.wait(), 1);
    }
}

TEST_F(KvplatformTest, TakesEachFromTheDeviceFile) {
    device("[directories]\nshared_data=/a\nreserved=/b\nbinaries=/c\nusb_mount=/d\nbig_temporary_storage=/e\n"
           "apps=/f\n");
    EXPECT_TRUE(isAt(3, "/a"));
    EXPECT_TRUE(isAt(6, "/b"));
    EXPECT_TRUE(isAt(7, "/c"));
    EXPECT_TRUE(isAt(10, "/d"));
    EXPECT_TRUE(isAt(27, "/e"));
    EXPECT_TRUE(isAt(28, "/f"));
}

TEST_F(KvplatformTest, FallsBackWhenTheDeviceFileCannotBeRead) {
    device("no key file");
    testing::internal::CaptureStderr();
    EXPECT_TRUE(isAt(28, "/usr/apps"));
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("device.ini: Key file contains line "));
}

TEST_F(KvplatformTest, GivesTheSameTextAtEachCall) {
    ForkedProcess process([] { return kvplatform_getenv(28) == kvplatform_getenv(28) ? 1 : 0; });
    EXPECT_EQ(process.wait(), 1);
}
