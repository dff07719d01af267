#pragma once

#include <boost/optional.hpp>

#include "DAXCommon/ETransactionalRewriteMode.h"

namespace boost::serialization {
class access;
} // namespace boost::serialization

namespace DAX::DAXCommon {

// The tuning values of the update core's installation: sizes in bytes, estimates in bytes per second. An empty optional
// leaves the choice to the device. The debug file holds the record, and any value that can be read is accepted,
// unchecked. The two values of the decompressor are not in the file, so they always begin with their defaults.
//
// A plain record without a lock: it is filled before other threads run.
class InstallationPerformanceParameters {
public:
    // The defaults. Any thread.
    static const InstallationPerformanceParameters& getDefaultParameters();

    boost::optional<unsigned long> getFlashStreamBufferSize() const { return m_flashStreamBufferSize; }
    void setFlashStreamBufferSize(boost::optional<unsigned long> value) { m_flashStreamBufferSize = value; }
    boost::optional<unsigned long> getFlashSinkBufferSize() const { return m_flashSinkBufferSize; }
    void setFlashSinkBufferSize(boost::optional<unsigned long> value) { m_flashSinkBufferSize = value; }
    unsigned long getNetworkStreamBufferSize() const { return m_networkStreamBufferSize; }
    void setNetworkStreamBufferSize(unsigned long value) { m_networkStreamBufferSize = value; }
    boost::optional<unsigned long> getUSBFileStreamBufferSize() const { return m_usbFileStreamBufferSize; }
    void setUSBFileStreamBufferSize(boost::optional<unsigned long> value) { m_usbFileStreamBufferSize = value; }
    unsigned long getDecrypterInputBufferSize() const { return m_decrypterInputBufferSize; }
    void setDecrypterInputBufferSize(unsigned long value) { m_decrypterInputBufferSize = value; }
    unsigned long getDecompressorInputChunkSize() const { return m_decompressorInputChunkSize; }
    void setDecompressorInputChunkSize(unsigned long value) { m_decompressorInputChunkSize = value; }
    unsigned long getDecompressorOutputBufferSize() const { return m_decompressorOutputBufferSize; }
    void setDecompressorOutputBufferSize(unsigned long value) { m_decompressorOutputBufferSize = value; }
    unsigned long getInstallationChunkSize() const { return m_installationChunkSize; }
    void setInstallationChunkSize(unsigned long value) { m_installationChunkSize = value; }
    unsigned long getVerificationChunkSize() const { return m_verificationChunkSize; }
    void setVerificationChunkSize(unsigned long value) { m_verificationChunkSize = value; }
    boost::optional<Storage::ETransactionalRewriteMode> getForceInstallationRewriteMode() const {
        return m_forceInstallationRewriteMode;
    }
    void setForceInstallationRewriteMode(boost::optional<Storage::ETransactionalRewriteMode> value) {
        m_forceInstallationRewriteMode = value;
    }
    boost::optional<Storage::ETransactionalRewriteMode> getForceVerificationRewriteMode() const {
        return m_forceVerificationRewriteMode;
    }
    void setForceVerificationRewriteMode(boost::optional<Storage::ETransactionalRewriteMode> value) {
        m_forceVerificationRewriteMode = value;
    }
    int getInstallationWorkerThreads() const { return m_installationWorkerThreads; }
    void setInstallationWorkerThreads(int value) { m_installationWorkerThreads = value; }
    bool getAllowBpsProviders() const { return m_allowBpsProviders; }
    void setAllowBpsProviders(bool value) { m_allowBpsProviders = value; }
    bool getParallelizeReads() const { return m_parallelizeReads; }
    void setParallelizeReads(bool value) { m_parallelizeReads = value; }
    bool getParallelizeWrites() const { return m_parallelizeWrites; }
    void setParallelizeWrites(bool value) { m_parallelizeWrites = value; }
    int getNumberOfBuffersForParallelization() const { return m_numberOfBuffersForParallelization; }
    void setNumberOfBuffersForParallelization(int value) { m_numberOfBuffersForParallelization = value; }
    unsigned long getBuffersSizeForParallelization() const { return m_buffersSizeForParallelization; }
    void setBuffersSizeForParallelization(unsigned long value) { m_buffersSizeForParallelization = value; }
    float getVerificationInitialBpsEstimate() const { return m_verificationInitialBpsEstimate; }
    void setVerificationInitialBpsEstimate(float value) { m_verificationInitialBpsEstimate = value; }
    float getOTADownloadingProgressScale() const { return m_otaDownloadingProgressScale; }
    void setOTADownloadingProgressScale(float value) { m_otaDownloadingProgressScale = value; }
    float getVerificationScale() const { return m_verificationScale; }
    void setVerificationScale(float value) { m_verificationScale = value; }
    float getInstallationProgressScale() const { return m_installationProgressScale; }
    void setInstallationProgressScale(float value) { m_installationProgressScale = value; }
    float getVerificationProgressScale() const { return m_verificationProgressScale; }
    void setVerificationProgressScale(float value) { m_verificationProgressScale = value; }
    float getNbdInstallationInitialBpsEstimate() const { return m_nbdInstallationInitialBpsEstimate; }
    void setNbdInstallationInitialBpsEstimate(float value) { m_nbdInstallationInitialBpsEstimate = value; }
    float getNbdVerificationInitialBpsEstimate() const { return m_nbdVerificationInitialBpsEstimate; }
    void setNbdVerificationInitialBpsEstimate(float value) { m_nbdVerificationInitialBpsEstimate = value; }
    float getNbdInstallationProgressScale() const { return m_nbdInstallationProgressScale; }
    void setNbdInstallationProgressScale(float value) { m_nbdInstallationProgressScale = value; }
    float getNbdVerificationProgressScale() const { return m_nbdVerificationProgressScale; }
    void setNbdVerificationProgressScale(float value) { m_nbdVerificationProgressScale = value; }

private:
    friend class boost::serialization::access;
    template <class Archive>
    void serialize(Archive& archive, unsigned int version);

    boost::optional<unsigned long> m_flashStreamBufferSize;
    boost::optional<unsigned long> m_flashSinkBufferSize;
    unsigned long m_networkStreamBufferSize = 1048576;
    boost::optional<unsigned long> m_usbFileStreamBufferSize;
    unsigned long m_decrypterInputBufferSize = 65536;
    unsigned long m_decompressorInputChunkSize = 262144;
    unsigned long m_decompressorOutputBufferSize = 1048576;
    unsigned long m_installationChunkSize = 1048576;
    unsigned long m_verificationChunkSize = 1048576;
    boost::optional<Storage::ETransactionalRewriteMode> m_forceInstallationRewriteMode;
    boost::optional<Storage::ETransactionalRewriteMode> m_forceVerificationRewriteMode;
    int m_installationWorkerThreads = 0;
    bool m_allowBpsProviders = true;
    bool m_parallelizeReads = true;
    bool m_parallelizeWrites = true;
    int m_numberOfBuffersForParallelization = 4;
    unsigned long m_buffersSizeForParallelization = 262144;
    float m_verificationInitialBpsEstimate = 25000000.0F;
    float m_otaDownloadingProgressScale = 30.0F;
    float m_verificationScale = 0.2F;
    float m_installationProgressScale = 1.0F;
    float m_verificationProgressScale = 0.2F;
    float m_nbdInstallationInitialBpsEstimate = 5242880.0F;
    float m_nbdVerificationInitialBpsEstimate = 9177400.0F;
    float m_nbdInstallationProgressScale = 3.0F;
    float m_nbdVerificationProgressScale = 2.0F;
};

} // namespace DAX::DAXCommon

namespace DAX {

// The values in force, which are those of the debug parameters. Throws what
// DebugAndTestParameters::getDebugAndTestParameters() throws.
const DAXCommon::InstallationPerformanceParameters& getInstallationPerformanceParameters();

} // namespace DAX
