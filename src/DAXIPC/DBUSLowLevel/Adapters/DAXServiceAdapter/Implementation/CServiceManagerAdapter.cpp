#include "DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/Implementation/CServiceManagerAdapter.h"

#include <map>
#include <utility>

#include <boost/exception/diagnostic_information.hpp>
#include <boost/serialization/library_version_type.hpp> // which the next one needs and does not include
#include <boost/serialization/list.hpp>
#include <boost/serialization/optional.hpp>
#include <boost/serialization/set.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>
#include <boost/thread/thread.hpp>

#include "Common/Logging/LoggingStream.h"
#include "DAXCommon/UserInterestExceptions.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ArchiveOutput.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/Introspection.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/MethodRelay.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/RequestBoundary.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/TimeSerialization.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"
#include "Utility/Utils/KeptInterruption.h"
#include "Utility/Utils/ThrowLogged.h"

namespace DAX::DAXIPC::DBUSLowLevel {

using Common::Logging::SafeOstringStream;
using Common::Utils::GenericException;
using Common::Utils::throwLogged;
using DAXCommon::ServiceClientPriority;
using DAXCommon::ServiceTransactionType;
using DAXCommon::UpgradeType;
using Service::IService;
using Service::IServiceManager;
using Service::IServiceTransaction;
using UserInterestExceptions::ServiceRevokedException;
using UserInterestExceptions::TransactionInvalidatedException;

namespace {

namespace Manager = DBUSNames::DBUSService::DBUSIServiceManager;
namespace ManagerMethods = DBUSNames::DBUSService::DBUSIServiceManager::Methods;
namespace ServiceMethods = DBUSNames::DBUSService::DBUSIService::Methods;
namespace TransactionMethods = DBUSNames::DBUSService::DBUSIServiceTransaction::Methods;

// Stands for a proxy's connection before its hello. No sender has this name.
const char* const NOT_SET = "<not-set>";

using This = CServiceManagerAdapter;

const std::map<std::string, This::Handler> mappingOfMethodsWithSender = {
    {ManagerMethods::getService, &This::handle_getService},
    {ManagerMethods::getServiceOwner, &This::handle_getServiceOwner},
    {ManagerMethods::getSupportedUpgradeTypes, &This::relay<&IServiceManager::getSupportedUpgradeTypes>},
    {ManagerMethods::getLastSearchingForUpgradeDate, &This::relay<&IServiceManager::getLastSearchingForUpgradeDate>},
    {ManagerMethods::getCurrentVersion, &This::relay<&IServiceManager::getCurrentVersion>},
    {ManagerMethods::acquireExternalLock, &This::relay<&IServiceManager::acquireExternalLock>},
    {ManagerMethods::releaseExternalLock, &This::relay<&IServiceManager::releaseExternalLock>},
    {ManagerMethods::scheduleFactoryReset, &This::relay<&IServiceManager::scheduleFactoryReset>},
    {ManagerMethods::helloMessage, &This::handle_helloMessage},
    {ServiceMethods::getClientPriority, &This::relay<&IService::getClientPriority>},
    {ServiceMethods::startNewTransaction, &This::handle_startNewTransaction},
    {ServiceMethods::invalidate, &This::handle_invalidate},
    {TransactionMethods::isSearchingPossible, &This::relay<&IServiceTransaction::isSearchingPossible>},
    {TransactionMethods::startSearching, &This::relay<&IServiceTransaction::startSearching>},
    {TransactionMethods::startModelsSearching, &This::relay<&IServiceTransaction::startModelsSearching>},
    {TransactionMethods::getSearchProgress, &This::relay<&IServiceTransaction::getSearchProgress>},
    {TransactionMethods::getSearchResult, &This::relay<&IServiceTransaction::getSearchResult>},
    {TransactionMethods::getModelsSearchResult, &This::relay<&IServiceTransaction::getModelsSearchResult>},
    {TransactionMethods::startInstallation, &This::relay<&IServiceTransaction::startInstallation>},
    {TransactionMethods::getInstallationProgress, &This::relay<&IServiceTransaction::getInstallationProgress>},
    {TransactionMethods::startFinalization, &This::relay<&IServiceTransaction::startFinalization>},
    {TransactionMethods::getFinalizationProgress, &This::relay<&IServiceTransaction::getFinalizationProgress>},
    {TransactionMethods::cancelServiceTransaction, &This::handle_cancelServiceTransaction},
};

bool isNamed(const char* sender, const std::string& name) {
    return sender != nullptr && name == sender;
}

std::string nameOf(const char* sender) {
    return sender != nullptr ? sender : SafeOstringStream::NULLPTR_STR;
}

template <class Entry>
std::string describeAccess(const Entry& entry, const char* sender) {
    return entry.proxyName + ". Original sender: " + entry.originalSender + ". Current sender: " + nameOf(sender);
}

} // namespace

CServiceManagerAdapter::CServiceManagerAdapter(const std::shared_ptr<IServiceManager::IServiceManagerFactory>& factory)
    : m_serviceManager(factory->create()) {}

CServiceManagerAdapter::~CServiceManagerAdapter() {
    boost::this_thread::disable_interruption noInterruption;
    if (!m_service) {
        return;
    }
    try {
        m_service->service->invalidate("Invalidating Service in CServiceManagerAdapter destructor");
    } catch (...) {
        DAX_LOG(FTL) << "Exception caught during invalidating Service: "
                     << boost::current_exception_diagnostic_information(true);
    }
}

bool CServiceManagerAdapter::handleRequest(const std::string& method, std::stringstream& in, std::stringstream& out,
                                           std::string& exceptionName, const char* sender) {
    return RequestBoundary::answer(out, exceptionName, [&] {
        (this->*RequestBoundary::find(mappingOfMethodsWithSender, method))(in, out, sender);
    });
}

void CServiceManagerAdapter::introspect(std::stringstream& out) {
    writeIntrospection(out, Manager::INTERFACE_NAME, methodNames(mappingOfMethodsWithSender));
}

void CServiceManagerAdapter::useThisEventSubscriber(Common::DBUSWrapper::IDBUSEventsSubscriber& subscriber) {
    m_eventsSubscriber = &subscriber;
}

void CServiceManagerAdapter::clientDisconnected(const char* sender) {
    if (!m_service) {
        DAX_LOG(INF) << "Client disconnected: " << sender << ". No Service is active.";
        return;
    }
    const std::string& creator = m_service->serviceManagerClient;
    if (!isNamed(sender, creator)) {
        DAX_LOG(ERR) << "Client disconnected: " << sender
                     << ". Service will not be invalidated, as it was created by ServiceManager client: " << creator
                     << "." << describeServiceClient();
        DAX_THROW(GenericException(), "Service belongs to other client. Disconnected client: "
                                          << nameOf(sender) << ". Service was created by ServiceManager client: "
                                          << creator << "." << describeServiceClient());
    }
    DAX_LOG(INF) << "Client disconnected. Invalidating Service created by this ServiceManager client: " << creator
                 << "." << describeServiceClient();
    try {
        m_service->service->invalidate("Invalidating Service, because ServiceManager client disconnected: " + creator +
                                       ". Current Service client: " + m_service->originalSender +
                                       ". Proxy name: " + m_service->proxyName);
    } catch (...) {
        Common::Utils::KeptInterruption::keep();
        DAX_LOG(FTL) << "Exception caught during invalidating Service: "
                     << boost::current_exception_diagnostic_information(true);
    }
    DAX_LOG(INF) << "Resetting service.";
    m_service.reset();
}

std::string CServiceManagerAdapter::describeServiceClient() const {
    return " Current Service client: proxy name=" + m_service->proxyName +
           " original sender=" + m_service->originalSender;
}

std::shared_ptr<IService> CServiceManagerAdapter::throwIfWrongService(const char* sender) const {
    if (!m_service) {
        throwLogged(ServiceRevokedException(),
                    "m_service was already destroyed or was never created. Sender: " + nameOf(sender),
                    BOOST_CURRENT_LOCATION);
    }
    if (!isNamed(sender, m_service->originalSender)) {
        throwLogged(ServiceRevokedException(),
                    "Accessing m_service that was created by a different sender. Proxy name: " +
                        describeAccess(*m_service, sender),
                    BOOST_CURRENT_LOCATION);
    }
    return m_service->service;
}

std::shared_ptr<IServiceTransaction> CServiceManagerAdapter::throwIfWrongTransaction(const char* sender) const {
    if (!m_serviceTransaction) {
        throwLogged(TransactionInvalidatedException(),
                    "m_serviceTransaction is already canceled or was never created. Sender: " + nameOf(sender),
                    BOOST_CURRENT_LOCATION);
    }
    if (!isNamed(sender, m_serviceTransaction->originalSender)) {
        throwLogged(TransactionInvalidatedException(),
                    "Accessing m_serviceTransaction that was created by a different sender. Proxy name: " +
                        describeAccess(*m_serviceTransaction, sender),
                    BOOST_CURRENT_LOCATION);
    }
    auto transaction = m_serviceTransaction->transaction.lock();
    if (!transaction) {
        throwLogged(TransactionInvalidatedException(),
                    "m_serviceTransaction is already destroyed on the CService side. Proxy name: " +
                        describeAccess(*m_serviceTransaction, sender),
                    BOOST_CURRENT_LOCATION);
    }
    return transaction;
}

template <>
std::shared_ptr<IServiceManager> CServiceManagerAdapter::targetFor(const char*) const {
    return m_serviceManager;
}

template <>
std::shared_ptr<IService> CServiceManagerAdapter::targetFor(const char* sender) const {
    return throwIfWrongService(sender);
}

template <>
std::shared_ptr<IServiceTransaction> CServiceManagerAdapter::targetFor(const char* sender) const {
    return throwIfWrongTransaction(sender);
}

template <auto Operation>
void CServiceManagerAdapter::relay(std::stringstream& in, std::stringstream& out, const char* sender) {
    const auto target = targetFor<typename OperationTraits<decltype(Operation)>::Interface>(sender);
    relayCall(*target, Operation, in, out);
}

void CServiceManagerAdapter::handle_getService(std::stringstream& in, std::stringstream& out, const char* sender) {
    using Arguments = std::tuple<ServiceClientPriority, std::string, ServiceTransactionType, std::string, std::string>;
    relayCall<Arguments>(in, out,
                         [&](ServiceClientPriority priority, const std::string& clientName, ServiceTransactionType type,
                             const std::string& proxyName, const std::string& /*connectionId*/) -> std::string {
                             auto service = m_serviceManager->getService(priority, clientName, type);
                             if (!service) {
                                 return {};
                             }
                             DAX_LOG(INF) << "New Service for " << proxyName << " created.";
                             // Replaces an older session, which the service manager has ended by now.
                             m_service = NameAndService{nameOf(sender), proxyName, NOT_SET, std::move(service)};
                             m_eventsSubscriber->subscribeForConnectionCloseEvent(m_service->serviceManagerClient);
                             return Manager::CONNECTION_NAME;
                         });
}

void CServiceManagerAdapter::handle_getServiceOwner(std::stringstream&, std::stringstream& out, const char*) {
    // The one method that does not open its parameter archive: its clients send none.
    ArchiveOutput archive(out);
    auto priority = ServiceClientPriority(0);
    std::string clientName;
    auto type = ServiceTransactionType(0);
    const bool owned = m_serviceManager->getServiceOwner(priority, clientName, type);
    archive << owned << priority << clientName << type;
}

void CServiceManagerAdapter::handle_helloMessage(std::stringstream& in, std::stringstream& out, const char* sender) {
    const ArchiveOutput header(out);
    std::string proxyName;
    ArchiveInput(in) >> proxyName;
    if (m_service && m_service->proxyName == proxyName) {
        DAX_LOG(INF) << "Hello message for Service received: " << proxyName << ", " << sender;
        m_service->originalSender = nameOf(sender);
    } else if (m_serviceTransaction && m_serviceTransaction->proxyName == proxyName) {
        DAX_LOG(INF) << "Hello message for ServiceTransaction received: " << proxyName << ", " << sender;
        m_serviceTransaction->originalSender = nameOf(sender);
    } else {
        DAX_LOG(WRN) << "Neither Service nor ServiceTransaction created by proxy '" << proxyName
                     << "' exist. Ignoring 'hello' message from sender: " << sender;
    }
}

void CServiceManagerAdapter::handle_startNewTransaction(std::stringstream& in, std::stringstream& out,
                                                        const char* sender) {
    const auto service = throwIfWrongService(sender);
    using Arguments = std::tuple<UpgradeType, std::string, std::string>;
    relayCall<Arguments>(
        in, out, [&](UpgradeType upgradeType, const std::string& proxyName, const std::string& connectionId) {
            DAX_LOG(INF) << "Starting new service transaction for proxy: " << proxyName << ", " << connectionId;
            // Null when the session is no longer valid. The answer stays the bus name; the calls of the transaction are
            // refused.
            m_serviceTransaction =
                NameAndServiceTransaction{proxyName, NOT_SET, service->startNewTransaction(upgradeType)};
            return std::string(Manager::CONNECTION_NAME);
        });
}

void CServiceManagerAdapter::handle_invalidate(std::stringstream& in, std::stringstream& out, const char* sender) {
    // When this throws, the session and the subscription stay.
    relay<&IService::invalidate>(in, out, sender);
    m_eventsSubscriber->unsubscribeFromConnectionCloseEvent();
    m_service.reset();
}

void CServiceManagerAdapter::handle_cancelServiceTransaction(std::stringstream& in, std::stringstream& out,
                                                             const char* sender) {
    relay<&IServiceTransaction::cancelServiceTransaction>(in, out, sender);
    m_serviceTransaction.reset();
}

} // namespace DAX::DAXIPC::DBUSLowLevel
