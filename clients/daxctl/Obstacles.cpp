#include "daxctl/Obstacles.h"

#include <cerrno>

#include <boost/exception/get_error_info.hpp>
#include <nlohmann/json.hpp>

#include "Platform/SystemAPI/VconfSystemAPI/IVConf.h"
#include "Platform/SystemAPI/VconfSystemAPI/VConfException.h"
#include "Utility/Utils/ErrorTags.h"
#include "daxctl/InstallationLock.h"

namespace daxctl {

nlohmann::ordered_json toJson(const std::optional<dax::Owner>& owner) {
    if (!owner) {
        return nullptr;
    }
    return {{"clientName", owner->clientName},
            {"priority", static_cast<int>(owner->priority)},
            {"transactionType", static_cast<int>(owner->transactionType)}};
}

std::string whyRefused(const std::optional<dax::Owner>& owner) {
    if (seeInstallationLock().isInForce.value_or(false)) {
        return "an installation lock is in force";
    }
    if (owner) {
        return "the service is held by " + owner->clientName + " with priority " +
               std::to_string(static_cast<int>(owner->priority));
    }
    return "an external lock of this priority or a higher one is held";
}

// A holder of a lower priority is not the reason: a lock is.
std::string whyRefused(const dax::Refusal& refusal) {
    return whyRefused(refusal.reason() == dax::Refusal::Reason::LOCKED ? std::nullopt : refusal.owner());
}

std::string whatToDo(const dax::Refusal& refusal) {
    if (seeInstallationLock().isInForce.value_or(false)) {
        return "Restart the device, which ends the installation, or see daxctl installation-lock.";
    }
    switch (refusal.reason()) {
    case dax::Refusal::Reason::SAME_CLIENT:
        return "End the other client of that name, or choose another name with --name.";
    case dax::Refusal::Reason::HELD:
        return "Ask again later, which --wait does, or with a --priority above " +
               std::to_string(static_cast<int>(refusal.owner()->priority)) + ", which takes the service over.";
    default:
        return "Ask again when the lock is released, which --wait does, or with a --priority above that of the lock; "
               "the service does not tell whose it is.";
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

// A daemon may start between two looks, and its lock is in force. So the bus is asked before and after the setting is
// read: without a daemon at both times, no lock that the setting tells of is in force.
DaemonTraces lookForTheDaemon(const dax::Client& client) {
    if (client.isServiceRunning()) {
        return {true, false};
    }
    const bool isSet = isBlockingExternalLockHeld().value_or(false);
    return {false, isSet && !client.isServiceRunning()};
}

} // namespace daxctl
