#pragma once

#include <list>
#include <set>
#include <string>

#include <boost/core/noncopyable.hpp>
#include <boost/optional.hpp>

#include "ServiceInterface/ServiceSearchResult.h"
#include "ServiceInterface/ServiceTransactionProgress.h"

namespace DAX::Service {

// One search, installation and finalization run. The sequence is the client's to drive. One thread at a time, but for
// cancelServiceTransaction, which may come from another. Exceptions of the core pass through unchanged.
class IServiceTransaction : private boost::noncopyable {
public:
    virtual ~IServiceTransaction() = default;

    // Empty when the core cannot tell.
    virtual boost::optional<bool> isSearchingPossible() = 0;
    virtual ServiceTransactionProgress getSearchProgress() = 0;
    virtual ServiceTransactionProgress getInstallationProgress() = 0;
    virtual ServiceTransactionProgress getFinalizationProgress() = 0;

    // Only after the search has ended: before, it is an assertion failure in the service.
    virtual ServiceSearchResult getSearchResult() = 0;
    virtual std::list<std::string> getModelsSearchResult() = 0;
    virtual void startSearching(std::string searchParameter) = 0;
    virtual void startModelsSearching() = 0;
    virtual void startInstallation(const std::set<std::string>& items) = 0;

    // Takes the installation lock first: from then on the service refuses everyone.
    virtual void startFinalization(const std::set<std::string>& items, bool finalizationFlag) = 0;
    virtual void cancelServiceTransaction(const std::string& reason) = 0;
};

} // namespace DAX::Service
