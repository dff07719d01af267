#pragma once

#include <memory>
#include <string>

#include "Common/DBUSWrapper/IDBUSProxy.h"

namespace DAX::Common::DBUSWrapper {

class CDBUSProxyFactory : public IDBUSProxy::IDBUSProxyFactory {
public:
    std::unique_ptr<IDBUSProxy> create(IDBUSWrapper::DBUSType type, const std::string& objectPath,
                                       const std::string& interfaceName,
                                       boost::optional<unsigned int> activationTimeoutMs,
                                       boost::optional<unsigned int> callTimeoutMs) override;
};

} // namespace DAX::Common::DBUSWrapper
