#include "DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/DAXIPCServiceManagerAdapter.h"

#include <utility>

#include <boost/exception/diagnostic_information.hpp>
#include <boost/thread/thread.hpp>

#include "Common/Logging/LoggingStream.h"
#include "DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/Implementation/CServiceManagerAdapter.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"

namespace DAX::DAXIPC::DBUSLowLevel {

namespace Names = DBUSNames::DBUSService::DBUSIServiceManager;
using Common::DBUSWrapper::IDBUSAdapter;
using Common::DBUSWrapper::IDBUSWrapper;

DAXIPCServiceManagerAdapter::DAXIPCServiceManagerAdapter(
    std::shared_ptr<IDBUSAdapter::IDBUSAdapterFactory> adapterFactory)
    : m_adapterFactory(std::move(adapterFactory)) {}

DAXIPCServiceManagerAdapter::~DAXIPCServiceManagerAdapter() {
    boost::this_thread::disable_interruption noInterruption;
    try {
        deactivate();
    } catch (...) {
        DAX_LOG(ERR) << "Exception caught in ~DAXIPCServiceManagerAdapter. Ignoring: "
                     << boost::current_exception_diagnostic_information(true);
    }
    // In this order: an adapter must not outlive its factory.
    m_adapter.reset();
    m_adapterFactory.reset();
}

void DAXIPCServiceManagerAdapter::listenDBUS(
    const std::shared_ptr<Service::IServiceManager::IServiceManagerFactory>& factory,
    unsigned int stopConditionIntervalInSeconds, unsigned int idleTimeoutInSeconds, unsigned int pingIntervalInSeconds,
    boost::optional<std::function<bool()>> stopCondition, boost::optional<std::function<void()>> pingFunction) {
    auto handler = std::make_shared<CServiceManagerAdapter>(factory);
    m_adapter = m_adapterFactory->create(IDBUSWrapper::SYSTEM, Names::OBJECT_PATH, std::move(handler), false);
    m_adapter->listenDBUS(stopConditionIntervalInSeconds, idleTimeoutInSeconds, pingIntervalInSeconds,
                          std::move(stopCondition), std::move(pingFunction), Names::CONNECTION_NAME);
}

void DAXIPCServiceManagerAdapter::deactivate() {
    if (m_adapter) {
        m_adapter->deactivate();
        DAX_LOG(INF) << "Adapter deactivated!";
    }
}

} // namespace DAX::DAXIPC::DBUSLowLevel
