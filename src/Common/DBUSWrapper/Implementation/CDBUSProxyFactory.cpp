#include "Common/DBUSWrapper/Implementation/CDBUSProxyFactory.h"

#include "Common/DBUSWrapper/Implementation/CDBUSProxy.h"

namespace DAX::Common::DBUSWrapper {

std::unique_ptr<IDBUSProxy::IDBUSProxyFactory> IDBUSProxy::createDefaultProxyFactory() {
    return std::make_unique<CDBUSProxyFactory>();
}

std::unique_ptr<IDBUSProxy> CDBUSProxyFactory::create(IDBUSWrapper::DBUSType type, const std::string& objectPath,
                                                      const std::string& interfaceName,
                                                      boost::optional<unsigned int> activationTimeoutMs,
                                                      boost::optional<unsigned int> callTimeoutMs) {
    return std::make_unique<CDBUSProxy>(objectPath, interfaceName, type, activationTimeoutMs, callTimeoutMs);
}

} // namespace DAX::Common::DBUSWrapper
