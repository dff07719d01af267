#pragma once

#include <list>
#include <set>
#include <string>
#include <vector>

#include <boost/optional.hpp>

#include "CoreInterface/SearchResult.h"
#include "CoreInterface/TransactionProgress.h"

namespace DAX::Core {

// One search, installation and finalization at the update core. One thread at a time. Every operation may throw an
// exception of UserInterestExceptions that the core raised, or one of the transport.
class ICoreTransaction {
public:
    // Empty when the core cannot tell.
    virtual boost::optional<bool> isSearchingPossible() = 0;
    virtual void startSearching(std::string searchParameter) = 0;
    virtual void startModelsSearching() = 0;
    virtual TransactionProgress getSearchProgress() = 0;
    virtual SearchResult getSearchResult() = 0;
    virtual std::list<std::string> getModelsSearchResult() = 0;
    virtual void startInstallation(const std::set<std::string>& items) = 0;
    virtual TransactionProgress getInstallationProgress() = 0;
    virtual void startFinalization(const std::set<std::string>& items,
                                   boost::optional<std::vector<unsigned char>> upgradeId, bool finalizationFlag) = 0;
    virtual TransactionProgress getFinalizationProgress() = 0;
    virtual void cancelCoreTransaction(const std::string& reason) = 0;
    virtual ~ICoreTransaction() = default;
};

} // namespace DAX::Core
