#include <DAXProductionConfig.h>
#include <gmock/gmock.h>

#include "platform/host/DeviceTest.h"
#include "support/ForkedProcess.h"

using DAX::Common::Debug::isProduction;
using DAX::Tests::DeviceTest;
using DAX::Tests::ForkedProcess;

namespace {

// The flag is read once in a process, so each question is asked in a process of its own.
class ProductionConfigTest : public DeviceTest {
protected:
    static bool askedInAnotherProcess() {
        ForkedProcess process([] { return isProduction() ? 1 : 0; });
        return process.wait() == 1;
    }

    static std::string errorsOfTwoQuestions() {
        return DAX::Tests::errorsOf([] {
            ForkedProcess process([] { return isProduction() || isProduction(); });
            EXPECT_EQ(process.wait(), 0);
        });
    }
};

} // namespace

TEST_F(ProductionConfigTest, WithoutAFileTheSoftwareIsNotForProduction) {
    EXPECT_FALSE(askedInAnotherProcess());
    EXPECT_EQ(errorsOfTwoQuestions(), "");
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
    EXPECT_EQ(errorsOfTwoQuestions(), "");

    device("[other]\nproduction=true\n");
    EXPECT_EQ(errorsOfTwoQuestions(), "");
}

TEST_F(ProductionConfigTest, BrokenFileIsReportedOnceWithPathAndReason) {
    device("no key file");

    EXPECT_EQ(errorsOfTwoQuestions(),
              path() + ": line 1: Key file contains line “no key file” which is not a key-value pair, group, or "
                       "comment; using the defaults\n");
}

TEST_F(ProductionConfigTest, ValueThatIsNoBooleanIsReportedOnce) {
    device("[software]\nproduction=perhaps\n");

    EXPECT_EQ(errorsOfTwoQuestions(),
              path() + ": line 2: 'production' in [software] is no boolean (true or false): 'perhaps'; using the "
                       "default\n");
}

TEST_F(ProductionConfigTest, AnswerIsFixedForTheLifeOfTheProcess) {
    device("[software]\nproduction=true\n");
    ForkedProcess process([this] {
        const bool before = isProduction();
        device("[software]\nproduction=false\n");
        return before && isProduction() ? 1 : 0;
    });

    EXPECT_EQ(process.wait(), 1);
}
