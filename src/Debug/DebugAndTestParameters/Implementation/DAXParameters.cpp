#include "Debug/DebugAndTestParameters/DAXParameters.h"

#include "Debug/DebugAndTestParameters/DebugAndTestParameters.h"

namespace DAX::DAXCommon {

using Common::getDebugAndTestParameters;

bool DAXParameters::getNoRebootFlag() const {
    return getDebugAndTestParameters().isNoRebootFlag();
}

void DAXParameters::setNoRebootFlag(bool value) {
    getDebugAndTestParameters().setNoRebootFlag(value);
}

bool DAXParameters::getSkipCompatibilityChecker() const {
    return getDebugAndTestParameters().isSkipCompatibilityChecker();
}

void DAXParameters::setSkipCompatibilityChecker(bool value) {
    getDebugAndTestParameters().setSkipCompatibilityChecker(value);
}

bool DAXParameters::getSkipVersionChecker() const {
    return getDebugAndTestParameters().isSkipVersionChecker();
}

void DAXParameters::setSkipVersionChecker(bool value) {
    getDebugAndTestParameters().setSkipVersionChecker(value);
}

bool DAXParameters::getSkipIntegrityChecker() const {
    return getDebugAndTestParameters().isSkipIntegrityChecker();
}

void DAXParameters::setSkipIntegrityChecker(bool value) {
    getDebugAndTestParameters().setSkipIntegrityChecker(value);
}

bool DAXParameters::getDontSwitchPartitions() const {
    return getDebugAndTestParameters().isDontSwitchPartitions();
}

void DAXParameters::setDontSwitchPartitions(bool value) {
    getDebugAndTestParameters().setDontSwitchPartitions(value);
}

bool DAXParameters::getEmulateWasSuccessfulUpgrade() const {
    return getDebugAndTestParameters().isEmulateWasSuccessfulUpgrade();
}

void DAXParameters::setEmulateWasSuccessfulUpgrade(bool value) {
    getDebugAndTestParameters().setEmulateWasSuccessfulUpgrade(value);
}

bool DAXParameters::getTestTransformationFailure() const {
    return getDebugAndTestParameters().isTestTransformationFailure();
}

void DAXParameters::setTestTransformationFailure(bool value) {
    getDebugAndTestParameters().setTestTransformationFailure(value);
}

bool DAXParameters::getUseOTNTestServer() const {
    return getDebugAndTestParameters().isUseOTNTestServer();
}

void DAXParameters::setUseOTNTestServer(bool value) {
    getDebugAndTestParameters().setUseOTNTestServer(value);
}

bool DAXParameters::getDurationReduced() const {
    return getDebugAndTestParameters().isDurationReduced();
}

void DAXParameters::setDurationReduced(bool value) {
    getDebugAndTestParameters().setDurationReduced(value);
}

unsigned long DAXParameters::getNumberOfFailures() const {
    return getDebugAndTestParameters().getNumberOfFailures();
}

void DAXParameters::setNumberOfFailures(unsigned long value) {
    getDebugAndTestParameters().setNumberOfFailures(value);
}

int DAXParameters::getOTASetServiceOption() const {
    return getDebugAndTestParameters().getOTASetServiceOption();
}

void DAXParameters::setOTASetServiceOption(int value) {
    getDebugAndTestParameters().setOTASetServiceOption(value);
}

std::string DAXParameters::getOTNTestServerAddress() const {
    return getDebugAndTestParameters().getOTNTestServerAddress();
}

std::string DAXParameters::getServiceTransactionStubScenarioPath() const {
    return getDebugAndTestParameters().getServiceTransactionStubScenarioPath();
}

std::string DAXParameters::getCoreTransactionStubScenarioPath() const {
    return getDebugAndTestParameters().getCoreTransactionStubScenarioPath();
}

std::string DAXParameters::getOtnOUItemDownloadDirectory() const {
    return getDebugAndTestParameters().getOtnOUItemDownloadDirectory();
}

std::string DAXParameters::getResumeDataBackupDirectory() const {
    return getDebugAndTestParameters().getResumeDataBackupDirectory();
}

DAXParameters& getDAXParameters() {
    static DAXParameters parameters;
    return parameters;
}

} // namespace DAX::DAXCommon
