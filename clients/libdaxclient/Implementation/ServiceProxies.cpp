#include "libdaxclient/Implementation/ServiceProxies.h"

#include <array>
#include <cerrno>
#include <tuple>
#include <utility>

#include <sys/random.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "DAXCommon/Encoding.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/NamedExceptions.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace dax::detail {

using namespace DAX::Common::DBUSWrapper;

namespace {

std::string randomId() {
    std::array<unsigned char, 16> bits{};
    ssize_t count = 0;
    do {
        count = getrandom(bits.data(), bits.size(), 0);
    } while (count < 0 && errno == EINTR);
    if (count != static_cast<ssize_t>(bits.size())) {
        DAX_THROW(DBUSWrapperExceptions::ErrorConnectingToDBUS(), "The system gives no random numbers.");
    }
    return DAX::DAXCommon::Encoding::binToHex(bits.data(), bits.size());
}

bool isKnown(const std::string& exceptionName) {
    const auto isOneOf = [&exceptionName](auto... named) { return ((exceptionName == named.wireName) || ...); };
    return std::apply(isOneOf, DAX::DAXIPC::DBUSLowLevel::NAMED_EXCEPTIONS);
}

class ServiceProxy : public IDBUSProxy {
public:
    ServiceProxy(std::unique_ptr<IDBUSProxy> proxy, std::string uniqueName)
        : m_proxy(std::move(proxy)), m_id(randomId()), m_uniqueName(std::move(uniqueName)) {}

    std::string getProxyUniqueId() override { return m_id; }
    std::string getDBUSDebugConnectionId() override { return m_proxy->getDBUSDebugConnectionId(); }

    bool call(const std::string& method, const std::stringstream& parameters, std::stringstream& output,
              std::string& function) override {
        const bool isNormal = m_proxy->call(method, parameters, output, function);
        if (!isNormal && !isKnown(function)) {
            throw ForeignException(function, output.str());
        }
        return isNormal;
    }

    void init(const std::string& connectionName) override {
        m_proxy->init(m_uniqueName.empty() ? connectionName : m_uniqueName);
    }

private:
    const std::unique_ptr<IDBUSProxy> m_proxy;
    const std::string m_id;
    const std::string m_uniqueName; // empty: none
};

class ServiceProxyFactory : public IDBUSProxy::IDBUSProxyFactory {
public:
    ServiceProxyFactory(const ClientConnection& connection, std::string uniqueName)
        : m_factory(createClientProxyFactory(connection)), m_uniqueName(std::move(uniqueName)) {}

    std::unique_ptr<IDBUSProxy> create(IDBUSWrapper::DBUSType type, const std::string& objectPath,
                                       const std::string& interfaceName,
                                       boost::optional<unsigned int> activationTimeoutMs,
                                       boost::optional<unsigned int> callTimeoutMs) override {
        return std::make_unique<ServiceProxy>(
            m_factory->create(type, objectPath, interfaceName, activationTimeoutMs, callTimeoutMs), m_uniqueName);
    }

private:
    const std::unique_ptr<IDBUSProxyFactory> m_factory;
    const std::string m_uniqueName;
};

} // namespace

ForeignException::ForeignException(std::string name, std::string archive)
    : m_name(std::move(name)), m_archive(std::move(archive)) {}

std::shared_ptr<IDBUSProxy::IDBUSProxyFactory> createServiceProxies(const ClientConnection& connection,
                                                                    const std::string& uniqueName) {
    return std::make_shared<ServiceProxyFactory>(connection, uniqueName);
}

} // namespace dax::detail
