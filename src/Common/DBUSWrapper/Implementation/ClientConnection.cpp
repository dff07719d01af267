#include "Common/DBUSWrapper/ClientConnection.h"

#include <utility>

#include "Common/DBUSWrapper/Implementation/CDBUSProxy.h"

namespace DAX::Common::DBUSWrapper {

namespace {

class ClientProxyFactory : public IDBUSProxy::IDBUSProxyFactory {
public:
    explicit ClientProxyFactory(ClientConnection connection) : m_connection(std::move(connection)) {}

    std::unique_ptr<IDBUSProxy> create(IDBUSWrapper::DBUSType, const std::string& objectPath,
                                       const std::string& interfaceName, boost::optional<unsigned int>,
                                       boost::optional<unsigned int>) override {
        return std::make_unique<CDBUSProxy>(objectPath, interfaceName, m_connection);
    }

private:
    const ClientConnection m_connection;
};

} // namespace

std::unique_ptr<IDBUSProxy::IDBUSProxyFactory> createClientProxyFactory(ClientConnection connection) {
    return std::make_unique<ClientProxyFactory>(std::move(connection));
}

} // namespace DAX::Common::DBUSWrapper
