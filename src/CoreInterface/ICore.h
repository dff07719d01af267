#pragma once

#include <memory>
#include <string>
#include <vector>

#include "CoreInterface/ICoreTransaction.h"
#include "CoreInterface/SearchingTransactionParameters.h"
#include "DAXCommon/UpgradeType.h"

namespace DAX::Core {

// The update core, which does the real work. One thread at a time. Every operation may throw an exception of
// UserInterestExceptions that the core raised, or one of the transport.
class ICore {
public:
    class ICoreFactory {
    public:
        virtual ~ICoreFactory() = default;

        // A connected core. Throws when none can be reached.
        virtual std::unique_ptr<ICore> create() = 0;
    };

    virtual std::vector<DAXCommon::UpgradeType> getSupportedUpgradeTypes() = 0;

    // Empty when the core refuses.
    virtual std::shared_ptr<ICoreTransaction> createTransaction(SearchingTransactionParameters parameters) = 0;

    // The version that the device runs now.
    virtual std::string getCurrentVersion() const = 0;
    virtual void scheduleFactoryReset() = 0;
    virtual ~ICore() = default;
};

} // namespace DAX::Core
