#pragma once

#include <map>
#include <string>
#include <utility>

#include "DAXCommon/ServiceClientPriority.h"
#include "ServiceInterface/IServiceManager.h"

namespace DAX::Service::ServiceManager {

using ExternalLock = std::pair<std::string, DAXCommon::ServiceClientPriority>; // the holder and its priority
using ExternalLocks = std::map<ExternalLockId, ExternalLock>;

// The holders' names in the order of their locks, a blank before each, for a line of the log. Clients choose their
// names and the number of their locks, so the text has a limit: beyond 64 KiB the other holders are only counted, as in
// ", and 7 more".
std::string describeHolders(const ExternalLocks& locks);

} // namespace DAX::Service::ServiceManager
