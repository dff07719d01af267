#pragma once

#include <memory>
#include <string>

#include "Service/ServiceManager/ProgressHelper.h"
#include "ServiceInterface/IServiceTransaction.h"

namespace DAX::Service::ServiceManager {

// Takes the place of a real transaction on a development device: plays a scenario, with no update core, so that a
// client can be exercised where there is no update. What the start operations are given makes no difference to it.
class CServiceTransactionStub : public IServiceTransaction {
public:
    CServiceTransactionStub(const ProgressHelper& searching, const ProgressHelper& installation,
                            const ProgressHelper& finalization);

    // A file that cannot be opened, read or written throws the archive's exception. ProgressHelper says which steps
    // have a form in a file. load() starts with such as have none: every scenario file whose first step can be read so
    // far ends the process.
    void save(const std::string& path) const;
    static std::unique_ptr<CServiceTransactionStub> load(const std::string& path);

    boost::optional<bool> isSearchingPossible() override;
    ServiceTransactionProgress getSearchProgress() override;
    ServiceTransactionProgress getInstallationProgress() override;
    ServiceTransactionProgress getFinalizationProgress() override;

    // Always finds an upgrade; its information is the file "update_info.xml" of the working directory, empty without
    // one.
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
