#include "daxctl/PinnedProxyFactory.h"

#include <utility>

namespace daxctl {

using DAX::Common::DBUSWrapper::IDBUSProxy;
using DAX::Common::DBUSWrapper::IDBUSWrapper;

namespace {

class PinnedProxy : public IDBUSProxy {
public:
    PinnedProxy(std::unique_ptr<IDBUSProxy> proxy, std::string uniqueName)
        : m_proxy(std::move(proxy)), m_uniqueName(std::move(uniqueName)) {}

    std::string getProxyUniqueId() override { return m_proxy->getProxyUniqueId(); }
    std::string getDBUSDebugConnectionId() override { return m_proxy->getDBUSDebugConnectionId(); }
    bool call(const std::string& method, const std::stringstream& parameters, std::stringstream& output,
              std::string& function) override {
        return m_proxy->call(method, parameters, output, function);
    }
    // The name that the caller gives is the well-known one, which another peer may have by now.
    void init(const std::string& /*connectionName*/) override { m_proxy->init(m_uniqueName); }

private:
    const std::unique_ptr<IDBUSProxy> m_proxy;
    const std::string m_uniqueName;
};

} // namespace

PinnedProxyFactory::PinnedProxyFactory(std::string uniqueName)
    : m_factory(IDBUSProxy::createDefaultProxyFactory()), m_uniqueName(std::move(uniqueName)) {}

std::unique_ptr<IDBUSProxy> PinnedProxyFactory::create(IDBUSWrapper::DBUSType type, const std::string& objectPath,
                                                       const std::string& interfaceName,
                                                       boost::optional<unsigned int> activationTimeoutMs,
                                                       boost::optional<unsigned int> callTimeoutMs) {
    return std::make_unique<PinnedProxy>(
        m_factory->create(type, objectPath, interfaceName, activationTimeoutMs, callTimeoutMs), m_uniqueName);
}

} // namespace daxctl
