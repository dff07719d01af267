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
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ServiceMethods.h"
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

// Stands for a proxy's connection before its hello. No sender has this name.
const char* const NOT_SET = "<not-set>";

using This = CServiceManagerAdapter;

// The entry of a method that one operation answers.
template <const auto& METHOD, auto Operation>
std::pair<const std::string, This::Handler> relayed() {
    return {METHOD.name, &This::relay<METHOD, Operation>};
}

const std::map<std::string, This::Handler> mappingOfMethodsWithSender = {
    {ServiceMethods::getService.name, &This::handle_getService},
    {ServiceMethods::getServiceOwner.name, &This::handle_getServiceOwner},
    relayed<ServiceMethods::getSupportedUpgradeTypes, &IServiceManager::getSupportedUpgradeTypes>(),
    relayed<ServiceMethods::getLastSearchingForUpgradeDate, &IServiceManager::getLastSearchingForUpgradeDate>(),
    relayed<ServiceMethods::getCurrentVersion, &IServiceManager::getCurrentVersion>(),
    relayed<ServiceMethods::acquireExternalLock, &IServiceManager::acquireExternalLock>(),
    relayed<ServiceMethods::releaseExternalLock, &IServiceManager::releaseExternalLock>(),
    relayed<ServiceMethods::scheduleFactoryReset, &IServiceManager::scheduleFactoryReset>(),
    {ServiceMethods::helloMessage.name, &This::handle_helloMessage},
    relayed<ServiceMethods::getClientPriority, &IService::getClientPriority>(),
    {ServiceMethods::startNewTransaction.name, &This::handle_startNewTransaction},
    {ServiceMethods::invalidate.name, &This::handle_invalidate},
    relayed<ServiceMethods::isSearchingPossible, &IServiceTransaction::isSearchingPossible>(),
    relayed<ServiceMethods::startSearching, &IServiceTransaction::startSearching>(),
    relayed<ServiceMethods::startModelsSearching, &IServiceTransaction::startModelsSearching>(),
    relayed<ServiceMethods::getSearchProgress, &IServiceTransaction::getSearchProgress>(),
    relayed<ServiceMethods::getSearchResult, &IServiceTransaction::getSearchResult>(),
    relayed<ServiceMethods::getModelsSearchResult, &IServiceTransaction::getModelsSearchResult>(),
    relayed<ServiceMethods::startInstallation, &IServiceTransaction::startInstallation>(),
    relayed<ServiceMethods::getInstallationProgress, &IServiceTransaction::getInstallationProgress>(),
    relayed<ServiceMethods::startFinalization, &IServiceTransaction::startFinalization>(),
    relayed<ServiceMethods::getFinalizationProgress, &IServiceTransaction::getFinalizationProgress>(),
    {ServiceMethods::cancelServiceTransaction.name, &This::handle_cancelServiceTransaction},
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

template <const auto& METHOD, auto Operation>
void CServiceManagerAdapter::relay(std::stringstream& in, std::stringstream& out, const char* sender) {
    const auto target = targetFor<typename OperationTraits<decltype(Operation)>::Interface>(sender);
    relayCall<METHOD, Operation>(*target, in, out);
}

void CServiceManagerAdapter::handle_getService(std::stringstream& in, std::stringstream& out, const char* sender) {
    relayCall<ServiceMethods::getService>(
        in, out,
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
    ResultOf<ServiceMethods::getServiceOwner> result{};
    auto& [isOwned, priority, clientName, type] = result;
    isOwned = m_serviceManager->getServiceOwner(priority, clientName, type);
    archive << isOwned << priority << clientName << type;
}

void CServiceManagerAdapter::handle_helloMessage(std::stringstream& in, std::stringstream& out, const char* sender) {
    const ArchiveOutput header(out);
    ArgumentsOf<ServiceMethods::helloMessage> arguments;
    const auto& [proxyName] = arguments;
    ArchiveInput(in) >> std::get<0>(arguments);
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
    relayCall<ServiceMethods::startNewTransaction>(
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
    relay<ServiceMethods::invalidate, &IService::invalidate>(in, out, sender);
    m_eventsSubscriber->unsubscribeFromConnectionCloseEvent();
    m_service.reset();
}

void CServiceManagerAdapter::handle_cancelServiceTransaction(std::stringstream& in, std::stringstream& out,
                                                             const char* sender) {
    relay<ServiceMethods::cancelServiceTransaction, &IServiceTransaction::cancelServiceTransaction>(in, out, sender);
    m_serviceTransaction.reset();
}

} // namespace DAX::DAXIPC::DBUSLowLevel
