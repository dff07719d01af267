#include "Service/ServiceManager/CServiceTransactionStub.h"

#include <fstream>
#include <vector>

#include <boost/filesystem/operations.hpp>
#include <boost/serialization/nvp.hpp>

#include "Common/IO/FileStream.h"
#include "Common/IO/IOCommon.h"
#include "Common/Logging/LoggingStream.h"
#include "Common/XML/XMLInput.h"
#include "Common/XML/XMLOutput.h"
#include "Utility/Utils/SafePlus.h"

namespace DAX::Service::ServiceManager {

using boost::serialization::make_nvp;
using Common::IO::SMALL_CHUNK_SIZE;
using Common::Utils::safePlus;

namespace {

const char UPDATE_INFO_FILE[] = "update_info.xml";
const char SEARCHING[] = "searchingProgress";
const char INSTALLATION[] = "installationProgress";
const char FINALIZATION[] = "finalizationProgress";
const int SCOPE = 2;

std::vector<unsigned char> readWhole(const boost::filesystem::path& path) {
    Common::IO::FileStream stream(path);
    std::vector<unsigned char> bytes;
    std::size_t size = 0;
    for (std::size_t read = SMALL_CHUNK_SIZE; read > 0;) {
        bytes.resize(safePlus(size, SMALL_CHUNK_SIZE));
        read = stream.readChunk(bytes.data() + size, SMALL_CHUNK_SIZE);
        size = safePlus(size, read);
    }
    bytes.resize(size);
    return bytes;
}

} // namespace

CServiceTransactionStub::CServiceTransactionStub(const ProgressHelper& searching, const ProgressHelper& installation,
                                                 const ProgressHelper& finalization)
    : searchingProgress(searching), installationProgress(installation), finalizationProgress(finalization) {}

void CServiceTransactionStub::save(const std::string& path) const {
    std::ofstream file(path);
    Common::XML::XMLOutput archive(file);
    archive << make_nvp(SEARCHING, searchingProgress) << make_nvp(INSTALLATION, installationProgress)
            << make_nvp(FINALIZATION, finalizationProgress);
    archive.finish();
}

std::unique_ptr<CServiceTransactionStub> CServiceTransactionStub::load(const std::string& path) {
    std::ifstream file(path);
    Common::XML::XMLInput archive(file);
    ProgressHelper searching(0);
    ProgressHelper installation(0);
    ProgressHelper finalization(0);
    archive >> make_nvp(SEARCHING, searching) >> make_nvp(INSTALLATION, installation) >>
        make_nvp(FINALIZATION, finalization);
    return std::make_unique<CServiceTransactionStub>(searching, installation, finalization);
}

boost::optional<bool> CServiceTransactionStub::isSearchingPossible() {
    return true;
}

ServiceTransactionProgress CServiceTransactionStub::getSearchProgress() {
    return searchingProgress.getProgress();
}

ServiceTransactionProgress CServiceTransactionStub::getInstallationProgress() {
    return installationProgress.getProgress();
}

ServiceTransactionProgress CServiceTransactionStub::getFinalizationProgress() {
    return finalizationProgress.getProgress();
}

ServiceSearchResult CServiceTransactionStub::getSearchResult() {
    return prepareSearchResult();
}

std::list<std::string> CServiceTransactionStub::getModelsSearchResult() {
    return {};
}

void CServiceTransactionStub::startSearching(std::string) {
    searchingProgress.startProgress();
}

void CServiceTransactionStub::startModelsSearching() {
    searchingProgress.startProgress();
}

void CServiceTransactionStub::startInstallation(const std::set<std::string>&) {
    installationProgress.startProgress();
}

void CServiceTransactionStub::startFinalization(const std::set<std::string>&, bool) {
    finalizationProgress.startProgress();
}

void CServiceTransactionStub::cancelServiceTransaction(const std::string& reason) {
    DAX_LOG(INF) << "CServiceTransactionStub - cancelServiceTransaction(): " << reason;
}

ServiceSearchResult CServiceTransactionStub::prepareSearchResult() {
    SingleUpgradeDescription upgrade;
    upgrade.upgradeType = DAXCommon::OTN;
    upgrade.upgradeId = {0};
    upgrade.version = std::string("1666.1234");
    if (boost::filesystem::exists(UPDATE_INFO_FILE)) {
        upgrade.updateInfo = readWhole(UPDATE_INFO_FILE);
    }
    upgrade.kind = DAXCommon::UPGRADE_KIND_REGULAR;
    upgrade.scope = SCOPE;
    ServiceSearchResult result;
    result.result = SERVICE_TRANSACTION_SUCCESS;
    result.upgrade = upgrade;
    return result;
}

} // namespace DAX::Service::ServiceManager
