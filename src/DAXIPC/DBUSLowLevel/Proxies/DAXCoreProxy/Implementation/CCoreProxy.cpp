#include "DAXIPC/DBUSLowLevel/Proxies/DAXCoreProxy/Implementation/CCoreProxy.h"

#include <utility>

#include <boost/chrono/duration.hpp>
#include <boost/exception/errinfo_nested_exception.hpp>
#include <boost/none.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>
#include <boost/thread/thread.hpp>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Common/Logging/LoggingStream.h"
#include "CoreInterface/CoreExceptions.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/CoreMethods.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/RemoteCall.h"
#include "DAXIPC/DBUSLowLevel/Proxies/DAXCoreProxy/Implementation/CCoreTransactionProxy.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::DAXIPC::DBUSLowLevel {

using namespace Common::DBUSWrapper;
namespace DBUSICore = DBUSNames::DBUSCore::DBUSICore;

namespace {

constexpr unsigned int TRANSACTION_ACTIVATION_TIMEOUT_MS = 10000;
constexpr int HELLO_ATTEMPTS = 3;
constexpr char ACTIVATION_FAILED[] = "Activation of DAXCore through DBUS Activation failed.";

// A DBUSWrapperException of `connect` becomes an ErrorConnectingToCoreException with its cause nested. All other
// exceptions pass unchanged.
template <class Connect>
std::shared_ptr<IDBUSProxy> connectToCore(Connect connect) {
    try {
        return connect();
    } catch (const DBUSWrapperExceptions::DBUSWrapperException&) {
        DAX_THROW(Core::CoreExceptions::ErrorConnectingToCoreException(),
                  boost::errinfo_nested_exception(boost::current_exception()));
    }
}

std::shared_ptr<IDBUSProxy> makeProxy(IDBUSProxy::IDBUSProxyFactory& factory, unsigned int activationTimeoutMs) {
    return factory.create(IDBUSWrapper::SYSTEM, DBUSICore::OBJECT_PATH(), DBUSICore::INTERFACE_NAME(),
                          activationTimeoutMs, boost::none);
}

} // namespace

CCoreProxy::CCoreProxy(std::shared_ptr<IDBUSProxy::IDBUSProxyFactory> factory, unsigned int activationTimeoutSeconds)
    : m_proxyFactory(std::move(factory)) {
    m_proxy = connectToCore([&] {
        auto proxy = makeProxy(*m_proxyFactory, activationTimeoutSeconds * 1000);
        proxy->init(DBUSICore::CONNECTION_NAME());
        return proxy;
    });
}

std::vector<DAXCommon::UpgradeType> CCoreProxy::getSupportedUpgradeTypes() {
    return callRemote<CoreMethods::getSupportedUpgradeTypes>(*m_proxy);
}

std::string CCoreProxy::getCurrentVersion() const {
    return callRemote<CoreMethods::getCurrentVersion>(*m_proxy);
}

void CCoreProxy::scheduleFactoryReset() {
    callRemote<CoreMethods::scheduleFactoryReset>(*m_proxy);
}

std::shared_ptr<Core::ICoreTransaction> CCoreProxy::createTransaction(Core::SearchingTransactionParameters parameters) {
    const auto proxy = connectToCore([&] { return makeProxy(*m_proxyFactory, TRANSACTION_ACTIVATION_TIMEOUT_MS); });
    const std::string proxyId = proxy->getProxyUniqueId();
    const std::string connectionId = proxy->getDBUSDebugConnectionId();
    const auto busName = callRemote<CoreMethods::createTransaction>(*m_proxy, parameters, proxyId, connectionId);
    if (busName.empty()) {
        return nullptr;
    }
    for (int attempt = 1; attempt <= HELLO_ATTEMPTS; ++attempt) {
        if (auto transaction = initTransaction(proxy, busName)) {
            return transaction;
        }
        DAX_LOG(ERR) << "Activation of DAXCore through DBUS Activation failed (" << attempt << "/" << HELLO_ATTEMPTS
                     << "). Trying again.";
        // Also after the last attempt, and the line above is logged then, too.
        boost::this_thread::sleep_for(boost::chrono::milliseconds(1000));
    }
    DAX_LOG(ERR) << ACTIVATION_FAILED;
    DAX_THROW(DBUSWrapperExceptions::RemoteObjectNotAccessible(), ACTIVATION_FAILED);
}

std::shared_ptr<Core::ICoreTransaction> CCoreProxy::initTransaction(std::shared_ptr<IDBUSProxy> proxy,
                                                                    const std::string& busName) {
    try {
        proxy->init(busName);
        sendHelloMessage(*proxy);
    } catch (const DBUSWrapperExceptions::RemoteObjectActivationTimedOut&) {
        DAX_LOG(ERR) << ACTIVATION_FAILED;
        return nullptr;
    }
    return std::make_shared<CCoreTransactionProxy>(std::move(proxy));
}

void CCoreProxy::sendHelloMessage(IDBUSProxy& proxy) {
    callRemote<CoreMethods::helloMessage>(proxy, proxy.getProxyUniqueId());
}

} // namespace DAX::DAXIPC::DBUSLowLevel
