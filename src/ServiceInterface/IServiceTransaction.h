#pragma once

#include <list>
#include <set>
#include <string>

#include <boost/core/noncopyable.hpp>
#include <boost/optional.hpp>

#include "ServiceInterface/ServiceSearchResult.h"
#include "ServiceInterface/ServiceTransactionProgress.h"

namespace DAX::Service {

// One run of search, installation and finalization. The client decides on the order of the calls; only the core checks
// it. One thread at a time, except for cancelServiceTransaction, which may come from another. Exceptions of the core
// pass unchanged.
class IServiceTransaction : private boost::noncopyable {
public:
    virtual ~IServiceTransaction() = default;

    // Whether a search can be started now. Empty when the core cannot tell.
    virtual boost::optional<bool> isSearchingPossible() = 0;

    // How far a step has come, as the core tells it. To be polled after the step's start.
    virtual ServiceTransactionProgress getSearchProgress() = 0;
    virtual ServiceTransactionProgress getInstallationProgress() = 0;
    virtual ServiceTransactionProgress getFinalizationProgress() = 0;

    // What the search has found. Only after getSearchProgress() has told of its end: earlier, an assertion fails and
    // ends the service. May be called again, which asks the core again.
    virtual ServiceSearchResult getSearchResult() = 0;

    // The models that a search by startModelsSearching() has found, as the core tells them.
    virtual std::list<std::string> getModelsSearchResult() = 0;

    // Starts the search for an upgrade; the parameter is the core's to understand. In a session of
    // TRANSACTION_TYPE_DATED_SEARCH it also records the date, once the core has started. When the date file cannot be
    // opened, this throws GenericException although the search runs.
    virtual void startSearching(std::string searchParameter) = 0;

    // Starts the search for models.
    virtual void startModelsSearching() = 0;

    // Starts the installation of what the search has found; the items are the core's to understand. Only after the end
    // of the search, as getSearchResult(). When the search has failed, the core is told to cancel, and then to install
    // all the same.
    virtual void startInstallation(const std::set<std::string>& items) = 0;

    // Takes the installation lock first; once its file exists, the service refuses everyone, even when this throws.
    // Throws GenericException, without a lock, when the core told no current version or the upgrade type has no name.
    // Throws what ServiceCommon::saveInstallationState throws. In all these cases the core is not asked.
    virtual void startFinalization(const std::set<std::string>& items, bool finalizationFlag) = 0;

    // Ends the transaction at the core. The reason goes to the core and the log.
    virtual void cancelServiceTransaction(const std::string& reason) = 0;
};

} // namespace DAX::Service
