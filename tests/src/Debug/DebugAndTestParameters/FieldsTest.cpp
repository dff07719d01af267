#include "DebugFileFixture.h"

namespace DAX::Tests {
namespace {

using DAXCommon::DAXParameters;
using DAXCommon::getDAXParameters;
using DAXCommon::InstallationPerformanceParameters;

struct Switch {
    const char* element;
    bool (DebugAndTestParameters::*get)() const;
    bool (DAXParameters::*facadeGet)() const;
    void (DAXParameters::*facadeSet)(bool);
};

const Switch SWITCHES[] = {{"noRebootFlag", &DebugAndTestParameters::isNoRebootFlag, &DAXParameters::getNoRebootFlag,
                            &DAXParameters::setNoRebootFlag},
                           {"skipCompatibilityChecker", &DebugAndTestParameters::isSkipCompatibilityChecker,
                            &DAXParameters::getSkipCompatibilityChecker, &DAXParameters::setSkipCompatibilityChecker},
                           {"skipVersionChecker", &DebugAndTestParameters::isSkipVersionChecker,
                            &DAXParameters::getSkipVersionChecker, &DAXParameters::setSkipVersionChecker},
                           {"skipIntegrityChecker", &DebugAndTestParameters::isSkipIntegrityChecker,
                            &DAXParameters::getSkipIntegrityChecker, &DAXParameters::setSkipIntegrityChecker},
                           {"dontSwitchPartitions", &DebugAndTestParameters::isDontSwitchPartitions,
                            &DAXParameters::getDontSwitchPartitions, &DAXParameters::setDontSwitchPartitions},
                           {"emulateWasSuccessfulUpgrade", &DebugAndTestParameters::isEmulateWasSuccessfulUpgrade,
                            &DAXParameters::getEmulateWasSuccessfulUpgrade,
                            &DAXParameters::setEmulateWasSuccessfulUpgrade},
                           {"testTransformationFailure", &DebugAndTestParameters::isTestTransformationFailure,
                            &DAXParameters::getTestTransformationFailure, &DAXParameters::setTestTransformationFailure},
                           {"useOTNTestServer", &DebugAndTestParameters::isUseOTNTestServer,
                            &DAXParameters::getUseOTNTestServer, &DAXParameters::setUseOTNTestServer},
                           {"durationReduced", &DebugAndTestParameters::isDurationReduced,
                            &DAXParameters::getDurationReduced, &DAXParameters::setDurationReduced}};

class DebugParametersFields : public DebugFileFixture {};

TEST_F(DebugParametersFields, AllSwitchesAreOffByDefault) {
    const DebugAndTestParameters parameters;
    for (const Switch& one : SWITCHES) {
        EXPECT_FALSE((parameters.*one.get)()) << one.element;
    }
}

TEST_F(DebugParametersFields, EverythingElseIsZeroOrEmptyByDefaultExceptTheServer) {
    const DebugAndTestParameters parameters;
    EXPECT_THAT(parameters.getOTNTestServerAddress(), ::testing::MatchesRegex("[a-z.-]+:[0-9]+/"));
    EXPECT_EQ(parameters.getNumberOfFailures(), 0U);
    EXPECT_EQ(parameters.getOTASetServiceOption(), 0);
    EXPECT_EQ(parameters.getServiceTransactionStubScenarioPath(), "");
    EXPECT_EQ(parameters.getCoreTransactionStubScenarioPath(), "");
    EXPECT_EQ(parameters.getOtnOUItemDownloadDirectory(), "");
    EXPECT_EQ(parameters.getResumeDataBackupDirectory(), "");
}

TEST_F(DebugParametersFields, EachSwitchIsReadFromItsOwnElement) {
    for (const Switch& one : SWITCHES) {
        write(debugFile({{one.element, "1"}}));
        DebugAndTestParameters parameters;
        ASSERT_TRUE(parameters.load());
        for (const Switch& other : SWITCHES) {
            EXPECT_EQ((parameters.*other.get)(), &one == &other) << one.element << ", " << other.element;
        }
    }
}

TEST_F(DebugParametersFields, TheFacadeTurnsEachSwitchOfTheRecordAlone) {
    const DebugAndTestParameters& record = loaded();
    for (const Switch& one : SWITCHES) {
        (getDAXParameters().*one.facadeSet)(true);
        for (const Switch& other : SWITCHES) {
            EXPECT_EQ((record.*other.get)(), &one == &other) << one.element << ", " << other.element;
            EXPECT_EQ((getDAXParameters().*other.facadeGet)(), &one == &other) << one.element;
        }
        (getDAXParameters().*one.facadeSet)(false);
    }
}

TEST_F(DebugParametersFields, TheFacadeSetsTheNumbersOfTheRecord) {
    const DebugAndTestParameters& record = loaded();
    getDAXParameters().setNumberOfFailures(3);
    getDAXParameters().setOTASetServiceOption(-4);
    EXPECT_EQ(record.getNumberOfFailures(), 3U);
    EXPECT_EQ(record.getOTASetServiceOption(), -4);
    EXPECT_EQ(getDAXParameters().getNumberOfFailures(), 3U);
    EXPECT_EQ(getDAXParameters().getOTASetServiceOption(), -4);
}

TEST_F(DebugParametersFields, TheFacadeGivesTheTextsOfTheRecord) {
    write(goldenDebugFile("changed.xml"));
    loaded();
    EXPECT_EQ(getDAXParameters().getOTNTestServerAddress(), "other.example:81/");
    EXPECT_EQ(getDAXParameters().getServiceTransactionStubScenarioPath(), "/service scenario");
    EXPECT_EQ(getDAXParameters().getCoreTransactionStubScenarioPath(), "/core <scenario> & \"more\"");
    EXPECT_EQ(getDAXParameters().getOtnOUItemDownloadDirectory(), "/download");
    EXPECT_EQ(getDAXParameters().getResumeDataBackupDirectory(), "/backup");
}

TEST_F(DebugParametersFields, TheRecordHasItsOwnCopyOfTheDefaultTuning) {
    DebugAndTestParameters parameters;
    parameters.getInstallationPerformanceParameters().setNetworkStreamBufferSize(7);
    const DebugAndTestParameters& constant = parameters;
    EXPECT_EQ(constant.getInstallationPerformanceParameters().getNetworkStreamBufferSize(), 7U);
    EXPECT_EQ(InstallationPerformanceParameters::getDefaultParameters().getNetworkStreamBufferSize(), 1048576U);
    EXPECT_EQ(DebugAndTestParameters().getInstallationPerformanceParameters().getNetworkStreamBufferSize(), 1048576U);
}

} // namespace
} // namespace DAX::Tests
