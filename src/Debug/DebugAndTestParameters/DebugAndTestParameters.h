#pragma once

#include <map>
#include <string>

#include <boost/optional.hpp>

#include "Debug/DebugAndTestParameters/InstallationPerformanceParameters.h"

namespace DAX::DAXCommon {

// The switches that change how the update stack behaves on a development device; there is one record of them. It is
// read once, at the start, from the XML file "DebugAndTestParameters.xml" on the update partition. Without that file
// every switch keeps its default, and production software never reads the file.
//
// A bad file is logged and throws nothing; the elements before its bad place stay in the record. The file is untrusted
// input: no content makes the process allocate more than a small multiple of the file's size.
//
// The record has no lock: it is loaded on the main thread before other threads run, and then read from all threads.
// Loading again, setting and saving are for one thread while no other one reads.
class DebugAndTestParameters {
public:
    // Loads the record at the start; a second call only logs a warning. A missing or bad file counts as loaded.
    // Production software reads nothing, and then nothing counts as loaded.
    static void loadDebugAndTestParameters();

    // The one record; on production software always the defaults. On any other, throws GenericException before the
    // load, and after a reload() of a file that it could open but not read.
    static DebugAndTestParameters& getDebugAndTestParameters();

    // Whether the record was loaded, and no later reload() has opened a file that it could not read.
    static bool loaded();

    // Reads the file into the one record again. Returns false when the file cannot be opened, and then nothing has
    // changed, or when it cannot be read, and then the record counts as not loaded. Throws GenericException when it was
    // not loaded before.
    static bool reload();

    // Reads the file into this object. Returns false when it cannot be opened or read.
    bool load();

    // Writes this object to the file. Returns false, with a log line, when that fails.
    bool save() const;

    // The absolute path of the file.
    static std::string getConfigFilePath();

    // Free parameters, by name. The result is empty, or the default, for an absent name, and for a number or flag also
    // when its text is no number; that is logged. A flag is true for every number but 0.
    boost::optional<int> getCustomIntParam(const std::string& name) const;
    int getCustomIntParam(const std::string& name, int defaultValue) const;
    boost::optional<bool> getCustomBoolParam(const std::string& name) const;
    bool getCustomBoolParam(const std::string& name, bool defaultValue) const;
    boost::optional<std::string> getCustomStringParam(const std::string& name) const;
    std::string getCustomStringParam(const std::string& name, const std::string& defaultValue) const;

    // Sets a free parameter, and replaces an earlier value. An empty value erases the name.
    void setCustomStringParam(const std::string& name, boost::optional<std::string> value);
    void setCustomIntParam(const std::string& name, boost::optional<int> value);
    void setCustomBoolParam(const std::string& name, boost::optional<bool> value);

    const InstallationPerformanceParameters& getInstallationPerformanceParameters() const {
        return m_installationPerformanceParameters;
    }
    InstallationPerformanceParameters& getInstallationPerformanceParameters() {
        return m_installationPerformanceParameters;
    }

    // The fields of the file. All switches are off, all numbers 0 and all texts empty by default, except the address of
    // the server, "<host>:<port>/".
    bool isNoRebootFlag() const { return m_noRebootFlag; }
    void setNoRebootFlag(bool value) { m_noRebootFlag = value; }
    bool isSkipCompatibilityChecker() const { return m_skipCompatibilityChecker; }
    void setSkipCompatibilityChecker(bool value) { m_skipCompatibilityChecker = value; }
    bool isSkipVersionChecker() const { return m_skipVersionChecker; }
    void setSkipVersionChecker(bool value) { m_skipVersionChecker = value; }
    bool isSkipIntegrityChecker() const { return m_skipIntegrityChecker; }
    void setSkipIntegrityChecker(bool value) { m_skipIntegrityChecker = value; }
    bool isDontSwitchPartitions() const { return m_dontSwitchPartitions; }
    void setDontSwitchPartitions(bool value) { m_dontSwitchPartitions = value; }
    bool isEmulateWasSuccessfulUpgrade() const { return m_emulateWasSuccessfulUpgrade; }
    void setEmulateWasSuccessfulUpgrade(bool value) { m_emulateWasSuccessfulUpgrade = value; }
    bool isTestTransformationFailure() const { return m_testTransformationFailure; }
    void setTestTransformationFailure(bool value) { m_testTransformationFailure = value; }
    bool isUseOTNTestServer() const { return m_useOTNTestServer; }
    void setUseOTNTestServer(bool value) { m_useOTNTestServer = value; }
    bool isDurationReduced() const { return m_durationReduced; }
    void setDurationReduced(bool value) { m_durationReduced = value; }
    unsigned long getNumberOfFailures() const { return m_numberOfFailures; }
    void setNumberOfFailures(unsigned long value) { m_numberOfFailures = value; }
    int getOTASetServiceOption() const { return m_setOTASetServiceOption; }
    void setOTASetServiceOption(int value) { m_setOTASetServiceOption = value; }

    std::string getOTNTestServerAddress() const { return m_otnTestServerAddress; }
    std::string getServiceTransactionStubScenarioPath() const { return m_serviceTransactionStubScenarioPath; }
    std::string getCoreTransactionStubScenarioPath() const { return m_coreTransactionStubScenarioPath; }
    std::string getOtnOUItemDownloadDirectory() const { return m_otnOUItemDownloadDirectory; }
    std::string getResumeDataBackupDirectory() const { return m_resumeDataBackupDirectory; }

private:
    friend class boost::serialization::access;
    template <class Archive>
    void serialize(Archive& archive, unsigned int version);

    static DebugAndTestParameters instance;
    static bool isLoaded;

    bool m_noRebootFlag = false;
    bool m_skipCompatibilityChecker = false;
    bool m_skipVersionChecker = false;
    bool m_skipIntegrityChecker = false;
    bool m_dontSwitchPartitions = false;
    bool m_emulateWasSuccessfulUpgrade = false;
    bool m_testTransformationFailure = false;
    bool m_useOTNTestServer = false;
    std::string m_otnTestServerAddress = "otn-test-server.example:8080/";
    unsigned long m_numberOfFailures = 0;
    bool m_durationReduced = false;
    int m_setOTASetServiceOption = 0;
    InstallationPerformanceParameters m_installationPerformanceParameters =
        InstallationPerformanceParameters::getDefaultParameters();
    std::string m_serviceTransactionStubScenarioPath;
    std::string m_coreTransactionStubScenarioPath;
    std::string m_otnOUItemDownloadDirectory;
    std::string m_resumeDataBackupDirectory;
    std::map<std::string, std::string> m_customParams = {{"testParam0", "0"}, {"testParam1", "testStringValue1"}};
};

} // namespace DAX::DAXCommon

namespace DAX::Common {

// The same as DebugAndTestParameters::getDebugAndTestParameters().
DAXCommon::DebugAndTestParameters& getDebugAndTestParameters();

} // namespace DAX::Common
