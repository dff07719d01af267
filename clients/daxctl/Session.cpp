#include "daxctl/Session.h"

#include <cerrno>

#include <boost/exception/get_error_info.hpp>
#include <boost/filesystem/exception.hpp>
#include <nlohmann/json.hpp>

#include "Common/DBUSWrapper/IDBUSProxy.h"
#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/CServiceManagerProxyFactory.h"
#include "Platform/Product/IProductInfo.h"
#include "Platform/SystemAPI/VconfSystemAPI/IVConf.h"
#include "Platform/SystemAPI/VconfSystemAPI/VConfException.h"
#include "Utility/Utils/ErrorTags.h"

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
    if (isInstallationLocked().value_or(false)) {
        return "an installation lock is in force";
    }
    const auto owner = ownerOf(manager);
    if (!owner.is_null()) {
        return "the service is held by " + owner["clientName"].get<std::string>() + " with priority " +
               std::to_string(owner["priority"].get<int>());
    }
    return "an external lock of this priority or a higher one is held";
}

boost::optional<bool> isInstallationLocked() {
    try {
        return DAX::Platform::IProductInfo::isInstallationLocked();
    } catch (const boost::filesystem::filesystem_error& error) {
        if (error.code() == boost::system::errc::permission_denied) {
            return boost::none;
        }
        throw;
    }
}

// A setting that does not exist, or cannot be read for another reason, counts as a lock that nobody holds.
boost::optional<bool> isBlockingExternalLockHeld() {
    try {
        return DAX::Platform::VConfT<int>(DAX::Platform::VCONF_KEY_EXTERNAL_LOCK_ACQUIRED).get() == 1;
    } catch (const DAX::Platform::VConfException& exception) {
        const int* const result = boost::get_error_info<DAX::Common::Utils::errinfo_errorcode>(exception);
        return result != nullptr && *result == EACCES ? boost::none : boost::optional<bool>(false);
    }
}

} // namespace daxctl
