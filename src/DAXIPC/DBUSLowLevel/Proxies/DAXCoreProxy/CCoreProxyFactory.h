#pragma once

#include <memory>

#include "Common/DBUSWrapper/IDBUSProxy.h"
#include "CoreInterface/ICore.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// Makes the update core look like a local object: each core and each of its transactions has a bus connection of its
// own. The bus starts the core at the first call. One thread at a time; a call blocks for up to 60 seconds.
class CCoreProxyFactory : public Core::ICore::ICoreFactory {
public:
    // `activationTimeoutSeconds` is passed on to the proxies, in milliseconds, and has no effect there.
    CCoreProxyFactory(std::shared_ptr<Common::DBUSWrapper::IDBUSProxy::IDBUSProxyFactory> proxyFactory,
                      unsigned int activationTimeoutSeconds);

    // Throws CoreExceptions::ErrorConnectingToCoreException when there is no bus. Does not call the core yet.
    std::unique_ptr<Core::ICore> create() override;

private:
    std::shared_ptr<Common::DBUSWrapper::IDBUSProxy::IDBUSProxyFactory> m_proxyFactory;
    unsigned int m_activationTimeoutSeconds;
};

} // namespace DAX::DAXIPC::DBUSLowLevel
