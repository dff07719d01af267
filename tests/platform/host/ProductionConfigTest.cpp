#include "DAXProductionConfig.h"

#include "support/ForkedProcess.h"
#include "support/TemporaryRoot.h"

#include <gmock/gmock.h>

using DAX::Common::Debug::isProduction;
using DAX::Tests::ForkedProcess;
using DAX::Tests::TemporaryRoot;

namespace {

// The flag is read once in a process, so each question is asked in a process of its own.
class ProductionConfigTest : public testing::Test {
protected:
    static bool askedInAnotherProcess() {
        ForkedProcess process([] { return isProduction() ? 1 : 0; });
        return process.wait() == 1;
    }

    void device(const std::string& text) const { m_root.write("etc/kovan/device.ini", text); }

    std::string errorsOfTwoQuestions() const {
        testing::internal::CaptureStderr();
        ForkedProcess process([] { return isProduction() || isProduction(); });
        EXPECT_EQ(0, process.wait());
        return testing::internal::GetCapturedStderr();
    }

    std::string path() const { return (m_root / "etc/kovan/device.ini").string(); }

    const TemporaryRoot m_root;
};

} // namespace

TEST_F(ProductionConfigTest, WithoutAFileTheSoftwareIsNotForProduction) {
    EXPECT_FALSE(askedInAnotherProcess());
    EXPECT_EQ("", errorsOfTwoQuestions());
}

TEST_F(ProductionConfigTest, FileSaysTrue) {
    device("[software]\nproduction=true\n");
    EXPECT_TRUE(askedInAnotherProcess());
}

TEST_F(ProductionConfigTest, FileSaysFalse) {
    device("[software]\nproduction=false\n");
    EXPECT_FALSE(askedInAnotherProcess());
}

TEST_F(ProductionConfigTest, AbsentKeyOrGroupIsSilentlyFalse) {
    device("[software]\nversion=1\n");
    EXPECT_EQ("", errorsOfTwoQuestions());

    device("[other]\nproduction=true\n");
    EXPECT_EQ("", errorsOfTwoQuestions());
}

TEST_F(ProductionConfigTest, BrokenFileIsToldOnceWithPathAndReason) {
    device("no key file");

    EXPECT_THAT(errorsOfTwoQuestions(),
                testing::MatchesRegex(path() +
                                      ": Key file contains line .+no key file.+ which is not a key-value pair, "
                                      "group, or comment; using the default\n"));
}

TEST_F(ProductionConfigTest, ValueThatIsNoBooleanIsToldOnce) {
    device("[software]\nproduction=perhaps\n");

    EXPECT_THAT(errorsOfTwoQuestions(),
                testing::MatchesRegex(
                    path() + ": Key file contains key .+production.+ cannot be interpreted.+ using the default\n"));
}

TEST_F(ProductionConfigTest, AnswerIsFixedForTheLifeOfTheProcess) {
    device("[software]\nproduction=true\n");
    ForkedProcess process([this] {
        const bool before = isProduction();
        device("[software]\nproduction=false\n");
        return before && isProduction() ? 1 : 0;
    });

    EXPECT_EQ(1, process.wait());
}
