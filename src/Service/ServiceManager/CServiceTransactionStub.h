#pragma once

#include <memory>
#include <string>

#include "Service/ServiceManager/ProgressHelper.h"
#include "ServiceInterface/IServiceTransaction.h"

namespace DAX::Service::ServiceManager {

// Takes the place of a real transaction on a development device: plays a scenario without an update core, so that a
// client can be tried where there is no update. The arguments of the start operations make no difference. One thread at
// a time.
class CServiceTransactionStub : public IServiceTransaction {
public:
    CServiceTransactionStub(const ProgressHelper& searching, const ProgressHelper& installation,
                            const ProgressHelper& finalization);

    // A file that cannot be opened, read or written throws the archive's exception. ProgressHelper says which steps can
    // be stored. load() starts from steps that cannot: as soon as it has read the working time of the first step, an
    // assertion fails, so that every such scenario file ends the process.
    void save(const std::string& path) const;
    static std::unique_ptr<CServiceTransactionStub> load(const std::string& path);

    boost::optional<bool> isSearchingPossible() override;
    ServiceTransactionProgress getSearchProgress() override;
    ServiceTransactionProgress getInstallationProgress() override;
    ServiceTransactionProgress getFinalizationProgress() override;

    // Always finds an upgrade. Its information is the file "update_info.xml" in the working directory, empty when there
    // is none.
    ServiceSearchResult getSearchResult() override;
    std::list<std::string> getModelsSearchResult() override;
    void startSearching(std::string searchParameter) override;
    void startModelsSearching() override;
    void startInstallation(const std::set<std::string>& items) override;
    void startFinalization(const std::set<std::string>& items, bool finalizationFlag) override;
    void cancelServiceTransaction(const std::string& reason) override;

private:
    static ServiceSearchResult prepareSearchResult();

    ProgressHelper searchingProgress;
    ProgressHelper installationProgress;
    ProgressHelper finalizationProgress;
};

} // namespace DAX::Service::ServiceManager
