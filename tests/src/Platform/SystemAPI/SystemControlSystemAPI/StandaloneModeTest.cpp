#include <cerrno>
#include <csignal>

#include <boost/exception/errinfo_errno.hpp>
#include <sys/resource.h>

#include "AtSync.h"
#include "SystemControlTest.h"
#include "support/OtherPartition.h"

namespace DAX::Tests {
namespace {

using Platform::ISystemControl;
using testing::ElementsAre;
using testing::IsEmpty;

class StandaloneModeTest : public SystemControlTest {
protected:
    void expectRefusedRequest(int errnoValue) const {
        try {
            ISystemControl::requestStandaloneMode();
            FAIL() << "nothing thrown";
        } catch (const Common::Utils::GenericException& exception) {
            EXPECT_EQ(boost::get_error_info<Common::Utils::errinfo_path>(exception)->string(),
                      (root / request).string());
            EXPECT_EQ(textOf<Common::Utils::errinfo_stream_text>(exception), "Error during creating file.");
            EXPECT_EQ(*boost::get_error_info<boost::errinfo_errno>(exception), errnoValue);
        }
    }

    const std::string request = PARTITION + "STANDALONE";
};

// From now on no file of this process can get any content.
void forbidContent() {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit nothing{0, 0};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &nothing), 0);
}

TEST_F(StandaloneModeTest, IsThereWhenTheBootScriptsSaySo) {
    root.write("run/.standalone", "");
    EXPECT_TRUE(ISystemControl::isInStandaloneMode());
    root.write(request, "");
    EXPECT_TRUE(ISystemControl::isInStandaloneMode());
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(StandaloneModeTest, IsNotThereBeforeTheNextStart) {
    EXPECT_FALSE(ISystemControl::isInStandaloneMode());
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
    root.write(request, "");
    EXPECT_FALSE(ISystemControl::isInStandaloneMode());
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF STANDALONE flag file already exists, but we are not in standalone mode yet."));
}

TEST_F(StandaloneModeTest, IsRequestedOnce) {
    EXPECT_FALSE(ISystemControl::wasStandaloneModeRequested());
    ISystemControl::requestStandaloneMode();
    EXPECT_TRUE(ISystemControl::wasStandaloneModeRequested());
    EXPECT_EQ(root.read(request), "standalone\n");
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF Performing 'sync'.", "log FTL Successfully requested STANDALONE mode."));

    root.write(request, "as it was");
    FakeKovan::forgetRecords();
    ISystemControl::requestStandaloneMode();
    EXPECT_EQ(root.read(request), "as it was");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF STANDALONE flag file already exists."));
}

TEST_F(StandaloneModeTest, CannotBeRequestedWhereNothingCanBeWritten) {
    std::filesystem::remove_all(root / PARTITION);
    expectRefusedRequest(ENOENT);
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(StandaloneModeTest, IsNotRequestedByAFileThatIsGoneAgain) {
    const AtSync gone([this] { std::filesystem::remove(root / request); });
    expectRefusedRequest(0);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Performing 'sync'."));
}

TEST_F(StandaloneModeTest, TellsWhyTheRequestWasNotWritten) {
    EXPECT_IN_CHILD({
        forbidContent();
        const AtSync gone([this] { std::filesystem::remove(root / request); });
        expectRefusedRequest(EFBIG);
    });
}

TEST_F(StandaloneModeTest, IsRequestedByAFileWithoutItsText) {
    EXPECT_IN_CHILD({
        forbidContent();
        ISystemControl::requestStandaloneMode();
        EXPECT_TRUE(isThere(request));
        EXPECT_EQ(root.read(request), "");
        EXPECT_THAT(FakeKovan::journal(),
                    ElementsAre("log INF Performing 'sync'.", "log FTL Successfully requested STANDALONE mode."));
    });
}

TEST_F(StandaloneModeTest, KeepsThePlaceOfItsRequest) {
    ISystemControl::requestStandaloneMode();
    const OtherPartition other((root / "other").string());
    EXPECT_TRUE(ISystemControl::wasStandaloneModeRequested());
}

TEST_F(StandaloneModeTest, IsTakenBack) {
    ISystemControl::requestStandaloneMode();
    FakeKovan::forgetRecords();
    ISystemControl::quitStandaloneMode();
    EXPECT_FALSE(isThere(request));
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(StandaloneModeTest, CannotBeTakenBackWhenNobodyAsked) {
    ISystemControl::quitStandaloneMode();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF STANDALONE flag file doesnt exists."));
}

} // namespace
} // namespace DAX::Tests
