#include <gmock/gmock.h>
#include <kvplatform.h>

#include "platform/host/DeviceTest.h"
#include "support/ForkedProcess.h"

using DAX::Tests::DeviceTest;
using DAX::Tests::ForkedProcess;

namespace {

// The directories are read once in a process, so each question is asked in a process of its own.
class KvplatformTest : public DeviceTest {
protected:
    static bool isAt(int directory, const std::string& path) {
        ForkedProcess process([=] {
            const char* const answer = kvplatform_getenv(directory);
            return answer != nullptr && answer == path ? 1 : 0;
        });
        return process.wait() == 1;
    }
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
    EXPECT_THAT(DAX::Tests::errorsOf([] { EXPECT_TRUE(isAt(28, "/usr/apps")); }),
                testing::HasSubstr("device.ini: line 1: Key file contains line "));
}

TEST_F(KvplatformTest, GivesTheSameTextAtEachCall) {
    ForkedProcess process([] { return kvplatform_getenv(28) == kvplatform_getenv(28) ? 1 : 0; });
    EXPECT_EQ(process.wait(), 1);
}
