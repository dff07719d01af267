#pragma once

#include <memory>
#include <string>

#include <boost/optional.hpp>
#include <nlohmann/json_fwd.hpp>

#include "ServiceInterface/IServiceManager.h"

namespace daxctl {

// Who asks for the service, and for what.
struct Request {
    std::string clientName = "daxctl";
    int priority = 4;
    int transactionType = 2;
};

// A connection to the daemon. Throws ErrorConnectingToDBUS when there is no bus.
std::unique_ptr<DAX::Service::IServiceManager> connectToDaemon();

// Who holds the service: {"clientName", "priority", "transactionType"}, or null when nobody does.
nlohmann::ordered_json ownerOf(DAX::Service::IServiceManager& manager);

// What blocks a request, as far as it can be seen from outside: the owner, the installation lock, a blocking external
// lock.
std::string whyRefused(DAX::Service::IServiceManager& manager);

// The locks in force, according to the device's settings and files; empty when this user may not read those.
boost::optional<bool> isInstallationLocked();
boost::optional<bool> isBlockingExternalLockHeld();

} // namespace daxctl
