#pragma once

#include <string>

namespace DAX::DAXCommon {

// The fields of the debug and test parameters, for the rest of the system. It has no data: each call goes to
// DebugAndTestParameters::getDebugAndTestParameters(), and throws what that throws. Any thread may get; see
// DebugAndTestParameters for setting.
class DAXParameters {
public:
    // The switches, numbers and texts of the record, under the same names and with the same defaults.
    bool getNoRebootFlag() const;
    void setNoRebootFlag(bool value);
    bool getSkipCompatibilityChecker() const;
    void setSkipCompatibilityChecker(bool value);
    bool getSkipVersionChecker() const;
    void setSkipVersionChecker(bool value);
    bool getSkipIntegrityChecker() const;
    void setSkipIntegrityChecker(bool value);
    bool getDontSwitchPartitions() const;
    void setDontSwitchPartitions(bool value);
    bool getEmulateWasSuccessfulUpgrade() const;
    void setEmulateWasSuccessfulUpgrade(bool value);
    bool getTestTransformationFailure() const;
    void setTestTransformationFailure(bool value);
    bool getUseOTNTestServer() const;
    void setUseOTNTestServer(bool value);
    bool getDurationReduced() const;
    void setDurationReduced(bool value);
    unsigned long getNumberOfFailures() const;
    void setNumberOfFailures(unsigned long value);
    int getOTASetServiceOption() const;
    void setOTASetServiceOption(int value);

    std::string getOTNTestServerAddress() const;
    // The scenario file to play instead of a real transaction of the service, or of the core; empty in normal
    // operation.
    std::string getServiceTransactionStubScenarioPath() const;
    std::string getCoreTransactionStubScenarioPath() const;

    // Directories to use instead of the usual ones; empty in normal operation.
    std::string getOtnOUItemDownloadDirectory() const;
    std::string getResumeDataBackupDirectory() const;
};

// The one object. Never throws.
DAXParameters& getDAXParameters();

} // namespace DAX::DAXCommon
