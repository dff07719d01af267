#pragma once

#include "Service/ServiceManager/CServiceManagerFactory.h"
#include "ServiceFixture.h"
#include "ServiceInterface/IServiceManager.h"

namespace DAX::Tests {

// A service manager that has been started. The journal begins after that.
class ManagerFixture : public ServiceFixture {
protected:
    ManagerFixture() {
        start();
        forget();
    }

    void start() {
        Service::CServiceManagerFactory factory(std::make_shared<FakeCoreFactory>(script),
                                                std::make_shared<FakePowerModeFactory>(power));
        manager = factory.create();
    }

    std::shared_ptr<Service::IService> getService(int priority, const std::string& client, int type = 0) {
        return manager->getService(rank(priority), client, purpose(type));
    }

    // The client name of the session that the manager reports; "<none>" without one.
    std::string owner() {
        DAXCommon::ServiceClientPriority priority{};
        DAXCommon::ServiceTransactionType type{};
        std::string client;
        return manager->getServiceOwner(priority, client, type) ? client : "<none>";
    }

    std::unique_ptr<Service::IServiceManager> manager;
};

} // namespace DAX::Tests
