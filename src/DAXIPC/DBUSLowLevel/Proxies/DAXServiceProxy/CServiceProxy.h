#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "Common/DBUSWrapper/IDBUSProxy.h"
#include "ServiceInterface/IService.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// A client's session over the bus, as CServiceManagerProxy::getService() returns it. See CServiceManagerProxy for
// connections and errors.
//
// The service may revoke the session at any time in favour of a client with a higher priority. From then on every call
// throws DAXUnknownException, and the client may call getService() again.
//
// Threads: any; calls take turns.
class CServiceProxy : public Service::IService {
public:
    // `proxy` must have said hello.
    CServiceProxy(std::shared_ptr<Common::DBUSWrapper::IDBUSProxy::IDBUSProxyFactory> factory,
                  std::shared_ptr<Common::DBUSWrapper::IDBUSProxy> proxy);

    std::shared_ptr<Service::IServiceTransaction> startNewTransaction(DAXCommon::UpgradeType upgradeType) override;
    DAXCommon::ServiceClientPriority getClientPriority() override;

    // A second call has no effect once the first has succeeded; all other calls then throw DAXUnknownException.
    void invalidate(const std::string& reason) override;

private:
    std::shared_ptr<Common::DBUSWrapper::IDBUSProxy::IDBUSProxyFactory> m_proxyFactory;

    std::mutex m_mutex; // guards all below
    std::shared_ptr<Common::DBUSWrapper::IDBUSProxy> m_proxy;
    bool m_valid = true;
};

} // namespace DAX::DAXIPC::DBUSLowLevel
