#pragma once

#include <memory>
#include <string>

#include "Common/DBUSWrapper/IDBUSProxy.h"

namespace daxctl {

// Makes proxies that call one peer, whatever name they are told to call. When the peer is given by its unique bus name,
// a call reaches it or fails: it neither reaches a successor nor starts one.
class PinnedProxyFactory : public DAX::Common::DBUSWrapper::IDBUSProxy::IDBUSProxyFactory {
public:
    explicit PinnedProxyFactory(std::string uniqueName);

    std::unique_ptr<DAX::Common::DBUSWrapper::IDBUSProxy> create(DAX::Common::DBUSWrapper::IDBUSWrapper::DBUSType type,
                                                                 const std::string& objectPath,
                                                                 const std::string& interfaceName,
                                                                 boost::optional<unsigned int> activationTimeoutMs,
                                                                 boost::optional<unsigned int> callTimeoutMs) override;

private:
    const std::unique_ptr<IDBUSProxyFactory> m_factory;
    const std::string m_uniqueName;
};

} // namespace daxctl
