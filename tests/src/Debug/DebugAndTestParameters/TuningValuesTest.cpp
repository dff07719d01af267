#include "DebugFileFixture.h"

namespace DAX::Tests {
namespace {

using DAXCommon::InstallationPerformanceParameters;

class TuningValues : public DebugFileFixture {};

TEST_F(TuningValues, HaveTheirDefaults) {
    const InstallationPerformanceParameters& values = InstallationPerformanceParameters::getDefaultParameters();
    EXPECT_EQ(values.getFlashStreamBufferSize(), boost::none);
    EXPECT_EQ(values.getFlashSinkBufferSize(), boost::none);
    EXPECT_EQ(values.getNetworkStreamBufferSize(), 1048576U);
    EXPECT_EQ(values.getUSBFileStreamBufferSize(), boost::none);
    EXPECT_EQ(values.getDecrypterInputBufferSize(), 65536U);
    EXPECT_EQ(values.getDecompressorInputChunkSize(), 262144U);
    EXPECT_EQ(values.getDecompressorOutputBufferSize(), 1048576U);
    EXPECT_EQ(values.getInstallationChunkSize(), 1048576U);
    EXPECT_EQ(values.getVerificationChunkSize(), 1048576U);
    EXPECT_EQ(values.getForceInstallationRewriteMode(), boost::none);
    EXPECT_EQ(values.getForceVerificationRewriteMode(), boost::none);
    EXPECT_EQ(values.getInstallationWorkerThreads(), 0);
    EXPECT_TRUE(values.getAllowBpsProviders());
    EXPECT_TRUE(values.getParallelizeReads());
    EXPECT_TRUE(values.getParallelizeWrites());
    EXPECT_EQ(values.getNumberOfBuffersForParallelization(), 4);
    EXPECT_EQ(values.getBuffersSizeForParallelization(), 262144U);
    EXPECT_EQ(values.getVerificationInitialBpsEstimate(), 25000000.0F);
    EXPECT_EQ(values.getOTADownloadingProgressScale(), 30.0F);
    EXPECT_EQ(values.getVerificationScale(), 0.2F);
    EXPECT_EQ(values.getInstallationProgressScale(), 1.0F);
    EXPECT_EQ(values.getVerificationProgressScale(), 0.2F);
    EXPECT_EQ(values.getNbdInstallationInitialBpsEstimate(), 5242880.0F);
    EXPECT_EQ(values.getNbdVerificationInitialBpsEstimate(), 9177400.0F);
    EXPECT_EQ(values.getNbdInstallationProgressScale(), 3.0F);
    EXPECT_EQ(values.getNbdVerificationProgressScale(), 2.0F);
}

TEST_F(TuningValues, AreSetEachOnItsOwn) {
    InstallationPerformanceParameters values;
    values.setFlashStreamBufferSize(boost::make_optional(1UL));
    values.setFlashSinkBufferSize(boost::make_optional(2UL));
    values.setNetworkStreamBufferSize(3U);
    values.setUSBFileStreamBufferSize(boost::make_optional(4UL));
    values.setDecrypterInputBufferSize(5U);
    values.setDecompressorInputChunkSize(6U);
    values.setDecompressorOutputBufferSize(7U);
    values.setInstallationChunkSize(8U);
    values.setVerificationChunkSize(9U);
    values.setForceInstallationRewriteMode(boost::make_optional(static_cast<Storage::ETransactionalRewriteMode>(10)));
    values.setForceVerificationRewriteMode(boost::make_optional(static_cast<Storage::ETransactionalRewriteMode>(11)));
    values.setInstallationWorkerThreads(12);
    values.setAllowBpsProviders(false);
    values.setParallelizeReads(false);
    values.setParallelizeWrites(false);
    values.setNumberOfBuffersForParallelization(16);
    values.setBuffersSizeForParallelization(17U);
    values.setVerificationInitialBpsEstimate(18.5F);
    values.setOTADownloadingProgressScale(19.5F);
    values.setVerificationScale(20.5F);
    values.setInstallationProgressScale(21.5F);
    values.setVerificationProgressScale(22.5F);
    values.setNbdInstallationInitialBpsEstimate(23.5F);
    values.setNbdVerificationInitialBpsEstimate(24.5F);
    values.setNbdInstallationProgressScale(25.5F);
    values.setNbdVerificationProgressScale(26.5F);
    EXPECT_EQ(values.getFlashStreamBufferSize(), boost::make_optional(1UL));
    EXPECT_EQ(values.getFlashSinkBufferSize(), boost::make_optional(2UL));
    EXPECT_EQ(values.getNetworkStreamBufferSize(), 3U);
    EXPECT_EQ(values.getUSBFileStreamBufferSize(), boost::make_optional(4UL));
    EXPECT_EQ(values.getDecrypterInputBufferSize(), 5U);
    EXPECT_EQ(values.getDecompressorInputChunkSize(), 6U);
    EXPECT_EQ(values.getDecompressorOutputBufferSize(), 7U);
    EXPECT_EQ(values.getInstallationChunkSize(), 8U);
    EXPECT_EQ(values.getVerificationChunkSize(), 9U);
    EXPECT_EQ(values.getForceInstallationRewriteMode(),
              boost::make_optional(static_cast<Storage::ETransactionalRewriteMode>(10)));
    EXPECT_EQ(values.getForceVerificationRewriteMode(),
              boost::make_optional(static_cast<Storage::ETransactionalRewriteMode>(11)));
    EXPECT_EQ(values.getInstallationWorkerThreads(), 12);
    EXPECT_FALSE(values.getAllowBpsProviders());
    EXPECT_FALSE(values.getParallelizeReads());
    EXPECT_FALSE(values.getParallelizeWrites());
    EXPECT_EQ(values.getNumberOfBuffersForParallelization(), 16);
    EXPECT_EQ(values.getBuffersSizeForParallelization(), 17U);
    EXPECT_EQ(values.getVerificationInitialBpsEstimate(), 18.5F);
    EXPECT_EQ(values.getOTADownloadingProgressScale(), 19.5F);
    EXPECT_EQ(values.getVerificationScale(), 20.5F);
    EXPECT_EQ(values.getInstallationProgressScale(), 21.5F);
    EXPECT_EQ(values.getVerificationProgressScale(), 22.5F);
    EXPECT_EQ(values.getNbdInstallationInitialBpsEstimate(), 23.5F);
    EXPECT_EQ(values.getNbdVerificationInitialBpsEstimate(), 24.5F);
    EXPECT_EQ(values.getNbdInstallationProgressScale(), 25.5F);
    EXPECT_EQ(values.getNbdVerificationProgressScale(), 26.5F);
}

TEST_F(TuningValues, AreReadEachFromItsOwnElement) {
    write(goldenDebugFile("changed.xml"));
    const InstallationPerformanceParameters& values = loaded().getInstallationPerformanceParameters();
    EXPECT_EQ(values.getFlashStreamBufferSize(), boost::make_optional(101UL));
    EXPECT_EQ(values.getFlashSinkBufferSize(), boost::make_optional(102UL));
    EXPECT_EQ(values.getNetworkStreamBufferSize(), 200U);
    EXPECT_EQ(values.getUSBFileStreamBufferSize(), boost::make_optional(104UL));
    EXPECT_EQ(values.getDecrypterInputBufferSize(), 201U);
    EXPECT_EQ(values.getInstallationChunkSize(), 202U);
    EXPECT_EQ(values.getVerificationChunkSize(), 203U);
    EXPECT_EQ(values.getForceInstallationRewriteMode(), boost::make_optional(Storage::REWRITE_CHANGED));
    EXPECT_EQ(values.getForceVerificationRewriteMode(),
              boost::make_optional(static_cast<Storage::ETransactionalRewriteMode>(77)));
    EXPECT_EQ(values.getInstallationWorkerThreads(), -3);
    EXPECT_EQ(values.getNumberOfBuffersForParallelization(), 205);
    EXPECT_EQ(values.getBuffersSizeForParallelization(), 206U);
    EXPECT_EQ(values.getVerificationInitialBpsEstimate(), 1.5F);
    EXPECT_EQ(values.getOTADownloadingProgressScale(), 2.5F);
    EXPECT_EQ(values.getVerificationScale(), 3.5F);
    EXPECT_EQ(values.getInstallationProgressScale(), 4.5F);
    EXPECT_EQ(values.getVerificationProgressScale(), 5.5F);
    EXPECT_EQ(values.getNbdInstallationInitialBpsEstimate(), 6.5F);
    EXPECT_EQ(values.getNbdVerificationInitialBpsEstimate(), 7.5F);
    EXPECT_EQ(values.getNbdInstallationProgressScale(), 8.5F);
    EXPECT_EQ(values.getNbdVerificationProgressScale(), 9.5F);
}

TEST_F(TuningValues, HaveFlagsThatAreReadEachFromItsOwnElement) {
    for (const std::string flag : {"allowBpsProviders", "parallelizeReads", "parallelizeWrites"}) {
        write(debugFile({{flag, "0"}}));
        DebugAndTestParameters parameters;
        ASSERT_TRUE(parameters.load());
        const InstallationPerformanceParameters& values = parameters.getInstallationPerformanceParameters();
        EXPECT_EQ(values.getAllowBpsProviders(), flag != "allowBpsProviders");
        EXPECT_EQ(values.getParallelizeReads(), flag != "parallelizeReads");
        EXPECT_EQ(values.getParallelizeWrites(), flag != "parallelizeWrites");
    }
}

TEST_F(TuningValues, TheFirstOneOfTheFileIsReadAndTheDefaultsStay) {
    write(goldenDebugFile("changed.xml"));
    EXPECT_EQ(loaded().getInstallationPerformanceParameters().getFlashStreamBufferSize(), 101UL);
    EXPECT_EQ(InstallationPerformanceParameters::getDefaultParameters().getFlashStreamBufferSize(), boost::none);
}

TEST_F(TuningValues, ThoseOfTheDecompressorAreKeptOutOfTheFile) {
    DebugAndTestParameters parameters;
    parameters.getInstallationPerformanceParameters().setDecompressorInputChunkSize(4711);
    parameters.getInstallationPerformanceParameters().setDecompressorOutputBufferSize(4712);
    ASSERT_TRUE(parameters.save());
    EXPECT_EQ(written(), goldenDebugFile("defaults.xml"));
    const auto& read = loaded().getInstallationPerformanceParameters();
    EXPECT_EQ(read.getDecompressorInputChunkSize(), 262144U);
    EXPECT_EQ(read.getDecompressorOutputBufferSize(), 1048576U);
}

} // namespace
} // namespace DAX::Tests
