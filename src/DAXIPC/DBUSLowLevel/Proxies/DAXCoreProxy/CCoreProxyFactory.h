#pragma once

#include <memory>

#include "Common/DBUSWrapper/IDBUSProxy.h"
#include "CoreInterface/ICore.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// Makes the update core look like a local object: each core and each of its transactions has a bus connection of its
// own. The core is started by the bus when the first call reaches it. One thread at a time; a call may take 60 seconds.
class CCoreProxyFactory : public Core::ICore::ICoreFactory {
public:
    // The activation time-out is handed on to the proxies.
    CCoreProxyFactory(std::shared_ptr<Common::DBUSWrapper::IDBUSProxy::IDBUSProxyFactory> proxyFactory,
                      unsigned int activationTimeoutSeconds);

    // Throws CoreExceptions::ErrorConnectingToCoreException when there is no bus. No message goes to the core.
    std::unique_ptr<Core::ICore> create() override;

private:
    std::shared_ptr<Common::DBUSWrapper::IDBUSProxy::IDBUSProxyFactory> m_proxyFactory;
    unsigned int m_activationTimeoutSeconds;
};

} // namespace DAX::DAXIPC::DBUSLowLevel
