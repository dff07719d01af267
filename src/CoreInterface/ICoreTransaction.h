#pragma once

#include <list>
#include <set>
#include <string>
#include <vector>

#include <boost/optional.hpp>

#include "CoreInterface/SearchResult.h"
#include "CoreInterface/TransactionProgress.h"

namespace DAX::Core {

// One search, installation and finalization at the update core.
//
// The usual order: isSearchingPossible(), a start operation, then the progress of that step, again and again until its
// result is TRANSACTION_SUCCESS or TRANSACTION_FAILED; after a search its result; then the next step. The client drives
// this order, and the service does not check it: a core must answer every call at any time, if need be by an exception.
//
// One thread at a time, with one exception: cancelCoreTransaction() may come from another thread while another
// operation is running. Every operation may throw an exception of UserInterestExceptions, which the client then gets,
// or an exception of the transport (DBUSWrapperExceptions). The service releases a transaction without any further
// call; over the bus the core then sees the connection end.
class ICoreTransaction {
public:
    // Whether a search can be started now. Empty when the core cannot tell.
    virtual boost::optional<bool> isSearchingPossible() = 0;

    // Starts the search and returns. `searchParameter` comes from the client, unchanged; its meaning is up to the core.
    virtual void startSearching(std::string searchParameter) = 0;

    // Starts the search for models and returns; its result is getModelsSearchResult().
    virtual void startModelsSearching() = 0;

    // How far the search has come.
    virtual TransactionProgress getSearchProgress() = 0;

    // What the search found, with TRANSACTION_SUCCESS or TRANSACTION_FAILED as its result: any other value is an
    // assertion failure in the service. It is asked at the client's request, and once more before each
    // startInstallation().
    virtual SearchResult getSearchResult() = 0;

    // The models that the search for models found. Empty: none.
    virtual std::list<std::string> getModelsSearchResult() = 0;

    // Starts the installation and returns. `items` come from the client, unchanged. When the search has failed, the
    // service calls cancelCoreTransaction() first, and then this operation all the same: a core has to expect an
    // installation after a cancel.
    virtual void startInstallation(const std::set<std::string>& items) = 0;

    // How far the installation has come.
    virtual TransactionProgress getInstallationProgress() = 0;

    // Starts the finalization and returns; the installation lock file exists by then. `items` and `finalizationFlag`
    // come from the client, unchanged. `upgradeId` is that of the search result before the latest startInstallation();
    // empty when there was no installation or that search had failed.
    virtual void startFinalization(const std::set<std::string>& items,
                                   boost::optional<std::vector<unsigned char>> upgradeId, bool finalizationFlag) = 0;

    // How far the finalization has come.
    virtual TransactionProgress getFinalizationProgress() = 0;

    // Ends the transaction. `reason` is for the log. May come at any time, before a search, after the end of a step,
    // and more than once. For a transaction that is over, the core may throw
    // UserInterestExceptions::TransactionInvalidatedException (DAXCommon/UserInterestExceptions.h); the service takes
    // that for success when it drops a session.
    virtual void cancelCoreTransaction(const std::string& reason) = 0;
    virtual ~ICoreTransaction() = default;
};

} // namespace DAX::Core
