#pragma once

#include <functional>
#include <memory>

#include <boost/optional.hpp>

#include "Common/DBUSWrapper/IDBUSAdapter.h"
#include "ServiceInterface/IServiceManager.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// Puts the service manager on the bus and serves it. One run of listenDBUS for each object.
class DAXIPCServiceManagerAdapter {
public:
    explicit DAXIPCServiceManagerAdapter(
        std::shared_ptr<Common::DBUSWrapper::IDBUSAdapter::IDBUSAdapterFactory> adapterFactory);
    DAXIPCServiceManagerAdapter(const DAXIPCServiceManagerAdapter&) = delete;
    DAXIPCServiceManagerAdapter& operator=(const DAXIPCServiceManagerAdapter&) = delete;
    ~DAXIPCServiceManagerAdapter();

    // Makes the service manager and blocks until the daemon is to stop; every client call runs on the calling thread.
    // Times in seconds, as IDBUSAdapter::listenDBUS takes them. Throws what the factory or the bus throws.
    void listenDBUS(std::shared_ptr<Service::IServiceManager::IServiceManagerFactory> factory,
                    unsigned int stopConditionIntervalInSeconds, unsigned int idleTimeoutInSeconds,
                    unsigned int pingIntervalInSeconds, boost::optional<std::function<bool()>> stopCondition,
                    boost::optional<std::function<void()>> pingFunction);

    void deactivate();

private:
    std::shared_ptr<Common::DBUSWrapper::IDBUSAdapter::IDBUSAdapterFactory> m_adapterFactory;
    std::unique_ptr<Common::DBUSWrapper::IDBUSAdapter> m_adapter;
};

} // namespace DAX::DAXIPC::DBUSLowLevel
