#include "daxctl/Session.h"

#include "Common/DBUSWrapper/IDBUSProxy.h"
#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/CServiceManagerProxyFactory.h"
#include "Platform/Product/IProductInfo.h"
#include "Platform/SystemAPI/VconfSystemAPI/IVConf.h"

namespace daxctl {

using DAX::DAXCommon::ServiceClientPriority;
using DAX::DAXCommon::ServiceTransactionType;
using DAX::Service::IServiceManager;

std::unique_ptr<IServiceManager> connectToDaemon() {
    std::shared_ptr<DAX::Common::DBUSWrapper::IDBUSProxy::IDBUSProxyFactory> proxies =
        DAX::Common::DBUSWrapper::IDBUSProxy::createDefaultProxyFactory();
    return DAX::DAXIPC::DBUSLowLevel::CServiceManagerProxyFactory(std::move(proxies)).create();
}

nlohmann::ordered_json ownerOf(IServiceManager& manager) {
    auto priority = ServiceClientPriority(0);
    std::string clientName;
    auto type = ServiceTransactionType(0);
    if (!manager.getServiceOwner(priority, clientName, type)) {
        return nullptr;
    }
    return {{"clientName", clientName},
            {"priority", static_cast<int>(priority)},
            {"transactionType", static_cast<int>(type)}};
}

std::string whyRefused(IServiceManager& manager) {
    if (isInstallationLocked()) {
        return "an installation lock is in force";
    }
    const auto owner = ownerOf(manager);
    if (!owner.is_null()) {
        return "the service is held by " + owner["clientName"].get<std::string>() + " with priority " +
               std::to_string(owner["priority"].get<int>());
    }
    return "an external lock of this priority or a higher one is held";
}

bool isInstallationLocked() {
    return DAX::Platform::IProductInfo::isInstallationLocked();
}

bool isBlockingExternalLockHeld() {
    return DAX::Platform::VConfT<int>("memory/menu/support/softwareupdate/isExternalLockAcquired").getOr(0) == 1;
}

} // namespace daxctl
