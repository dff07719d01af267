#pragma once

#include <memory>
#include <string>
#include <vector>

#include "CoreInterface/ICoreTransaction.h"
#include "CoreInterface/SearchingTransactionParameters.h"
#include "DAXCommon/UpgradeType.h"

namespace DAX::Core {

// The update core, which does the real work. One thread at a time. Every operation may throw an exception of
// UserInterestExceptions, which the client then gets, or an exception of the transport (DBUSWrapperExceptions,
// CoreExceptions). Over the bus a call blocks for up to 60 seconds, createTransaction() for longer.
class ICore {
public:
    // Makes the connection to the core.
    class ICoreFactory {
    public:
        virtual ~ICoreFactory() = default;

        // A connected core. Throws CoreExceptions::ErrorConnectingToCoreException when it cannot be reached; over the
        // bus that means that there is no bus, since the core is called later.
        virtual std::unique_ptr<ICore> create() = 0;
    };

    // The upgrade types that this device can take. Empty: none.
    virtual std::vector<DAXCommon::UpgradeType> getSupportedUpgradeTypes() = 0;

    // A new transaction, owned by the caller. Null when the core refuses.
    virtual std::shared_ptr<ICoreTransaction> createTransaction(SearchingTransactionParameters parameters) = 0;

    // The version that the device runs now. Must not be empty: the service reads it when a transaction begins, and its
    // finalization throws GenericException for an empty one.
    virtual std::string getCurrentVersion() const = 0;

    // Asks the core to reset the device to its factory state; when it does so is up to the core.
    virtual void scheduleFactoryReset() = 0;
    virtual ~ICore() = default;
};

} // namespace DAX::Core
