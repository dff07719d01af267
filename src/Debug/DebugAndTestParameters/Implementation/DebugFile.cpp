#include "Debug/DebugAndTestParameters/Implementation/DebugFile.h"

#include <boost/serialization/map.hpp>
#include <boost/serialization/nvp.hpp>
#include <boost/serialization/optional.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/version.hpp>

#include "Common/XML/XMLInput.h"
#include "Common/XML/XMLOutput.h"
#include "Debug/DebugAndTestParameters/DebugAndTestParameters.h"

BOOST_CLASS_VERSION(DAX::DAXCommon::DebugAndTestParameters, 1)
BOOST_CLASS_VERSION(DAX::DAXCommon::InstallationPerformanceParameters, 1)

namespace DAX::DAXCommon {

using boost::serialization::make_nvp;

namespace {

const char ROOT_ELEMENT[] = "DebugAndTestParameters";
const unsigned int FIRST_VERSION_WITH_TEXTS = 1;

// The library would go on reading a record whose format it does not know.
void throwIfLater(unsigned int version, unsigned int known, const char* record) {
    using boost::archive::archive_exception;
    if (version > known) {
        throw archive_exception(archive_exception::unsupported_class_version, record);
    }
}

// In version 0 the free parameters were numbers.
template <class Archive>
void visitNumbersOnly(Archive& archive, std::map<std::string, std::string>& customParams) {
    std::map<std::string, int> numbers;
    archive& make_nvp("customIntParams", numbers);
    for (const auto& number : numbers) {
        customParams[number.first] = std::to_string(number.second);
    }
}

} // namespace

template <class Archive>
void InstallationPerformanceParameters::serialize(Archive& archive, unsigned int version) {
    throwIfLater(version, boost::serialization::version<InstallationPerformanceParameters>::value,
                 "InstallationPerformanceParameters");
    archive& make_nvp("flashStreamBufferSize", m_flashStreamBufferSize);
    archive& make_nvp("flashSinkBufferSize", m_flashSinkBufferSize);
    archive& make_nvp("networkStreamBufferSize", m_networkStreamBufferSize);
    archive& make_nvp("usbFileStreamBufferSize", m_usbFileStreamBufferSize);
    archive& make_nvp("decrypterInputBufferSize", m_decrypterInputBufferSize);
    archive& make_nvp("installationChunkSize", m_installationChunkSize);
    archive& make_nvp("verificationChunkSize", m_verificationChunkSize);
    archive& make_nvp("forceInstallationRewriteMode", m_forceInstallationRewriteMode);
    archive& make_nvp("forceVerificationRewriteMode", m_forceVerificationRewriteMode);
    archive& make_nvp("installationWorkerThreads", m_installationWorkerThreads);
    archive& make_nvp("allowBpsProviders", m_allowBpsProviders);
    archive& make_nvp("parallelizeReads", m_parallelizeReads);
    archive& make_nvp("parallelizeWrites", m_parallelizeWrites);
    archive& make_nvp("numberOfBuffersForParallelization", m_numberOfBuffersForParallelization);
    archive& make_nvp("buffersSizeForParallelization", m_buffersSizeForParallelization);
    archive& make_nvp("verificationInitialBpsEstimate", m_verificationInitialBpsEstimate);
    archive& make_nvp("otaDownloadingProgressScale", m_otaDownloadingProgressScale);
    archive& make_nvp("verificationScale", m_verificationScale);
    archive& make_nvp("installationProgressScale", m_installationProgressScale);
    archive& make_nvp("verificationProgressScale", m_verificationProgressScale);
    archive& make_nvp("nbdInstallationInitialBpsEstimate", m_nbdInstallationInitialBpsEstimate);
    archive& make_nvp("nbdVerificationInitialBpsEstimate", m_nbdVerificationInitialBpsEstimate);
    archive& make_nvp("nbdInstallationProgressScale", m_nbdInstallationProgressScale);
    archive& make_nvp("nbdVerificationProgressScale", m_nbdVerificationProgressScale);
}

template <class Archive>
void DebugAndTestParameters::serialize(Archive& archive, unsigned int version) {
    throwIfLater(version, boost::serialization::version<DebugAndTestParameters>::value, ROOT_ELEMENT);
    archive& make_nvp("noRebootFlag", m_noRebootFlag);
    archive& make_nvp("skipCompatibilityChecker", m_skipCompatibilityChecker);
    archive& make_nvp("skipVersionChecker", m_skipVersionChecker);
    archive& make_nvp("skipIntegrityChecker", m_skipIntegrityChecker);
    archive& make_nvp("dontSwitchPartitions", m_dontSwitchPartitions);
    archive& make_nvp("emulateWasSuccessfulUpgrade", m_emulateWasSuccessfulUpgrade);
    archive& make_nvp("testTransformationFailure", m_testTransformationFailure);
    archive& make_nvp("useOTNTestServer", m_useOTNTestServer);
    archive& make_nvp("otnTestServerAddress", m_otnTestServerAddress);
    archive& make_nvp("numberOfFailures", m_numberOfFailures);
    archive& make_nvp("durationReduced", m_durationReduced);
    archive& make_nvp("setOTASetServiceOption", m_setOTASetServiceOption);
    archive& make_nvp("installationPerformanceParameters", m_installationPerformanceParameters);
    archive& make_nvp("serviceTransactionStubScenarioPath", m_serviceTransactionStubScenarioPath);
    archive& make_nvp("coreTransactionStubScenarioPath", m_coreTransactionStubScenarioPath);
    archive& make_nvp("otnOUItemDownloadDirectory", m_otnOUItemDownloadDirectory);
    archive& make_nvp("resumeDataBackupDirectory", m_resumeDataBackupDirectory);
    if (version < FIRST_VERSION_WITH_TEXTS) {
        visitNumbersOnly(archive, m_customParams);
    } else {
        archive& make_nvp("customParams", m_customParams);
    }
}

void readDebugFile(std::istream& file, DebugAndTestParameters& parameters) {
    Common::XML::XMLInput(file) >> make_nvp(ROOT_ELEMENT, parameters);
}

void writeDebugFile(std::ostream& file, const DebugAndTestParameters& parameters) {
    Common::XML::XMLOutput archive(file);
    archive << make_nvp(ROOT_ELEMENT, parameters);
    archive.finish();
}

} // namespace DAX::DAXCommon
