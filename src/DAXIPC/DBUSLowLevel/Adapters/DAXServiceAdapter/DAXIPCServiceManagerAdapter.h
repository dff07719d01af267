#pragma once

#include <functional>
#include <memory>

#include <boost/optional.hpp>

#include "Common/DBUSWrapper/IDBUSAdapter.h"
#include "ServiceInterface/IServiceManager.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// Puts the service manager on the bus and serves it. listenDBUS() may be called once for each object. The object
// belongs to one thread; its destructor deactivates, and logs a failure of that.
class DAXIPCServiceManagerAdapter {
public:
    explicit DAXIPCServiceManagerAdapter(
        std::shared_ptr<Common::DBUSWrapper::IDBUSAdapter::IDBUSAdapterFactory> adapterFactory);
    DAXIPCServiceManagerAdapter(const DAXIPCServiceManagerAdapter&) = delete;
    DAXIPCServiceManagerAdapter& operator=(const DAXIPCServiceManagerAdapter&) = delete;
    ~DAXIPCServiceManagerAdapter();

    // Makes the service manager and blocks until the daemon has to stop; every client call runs on the calling thread.
    // The times are in seconds and mean the same as in IDBUSAdapter::listenDBUS(), as do the two functions. Throws what
    // the factory or the adapter throws.
    void listenDBUS(const std::shared_ptr<Service::IServiceManager::IServiceManagerFactory>& factory,
                    unsigned int stopConditionIntervalInSeconds, unsigned int idleTimeoutInSeconds,
                    unsigned int pingIntervalInSeconds, boost::optional<std::function<bool()>> stopCondition,
                    boost::optional<std::function<void()>> pingFunction);

    // Calls IDBUSAdapter::deactivate(). Does nothing before listenDBUS().
    void deactivate();

private:
    std::shared_ptr<Common::DBUSWrapper::IDBUSAdapter::IDBUSAdapterFactory> m_adapterFactory;
    std::unique_ptr<Common::DBUSWrapper::IDBUSAdapter> m_adapter;
};

} // namespace DAX::DAXIPC::DBUSLowLevel
