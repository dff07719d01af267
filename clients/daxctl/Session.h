#pragma once

#include <optional>
#include <string>

#include <boost/optional.hpp>
#include <nlohmann/json_fwd.hpp>

#include "dax/client.h"

namespace daxctl {

// Who asks for the service, and for what.
struct Request {
    std::string clientName = "daxctl";
    int priority = 4;
    int transactionType = 2;
};

// A connection to the daemon. Throws dax::Unreachable when there is no bus.
dax::Client connectToDaemon(const std::string& clientName = Request().clientName);

// Who holds the service: {"clientName", "priority", "transactionType"}, or null when nobody does.
nlohmann::ordered_json toJson(const std::optional<dax::Owner>& owner);

// What blocks a request, as far as it can be seen from outside: the owner, the installation lock, a blocking external
// lock.
std::string whyRefused(const std::optional<dax::Owner>& owner);
std::string whyRefused(const dax::Refusal& refusal);

// What a person can do about a refused request, in a sentence.
std::string whatToDo(const dax::Refusal& refusal);

// The locks in force, according to the device's settings and files; empty when this user may not read those.
boost::optional<bool> isInstallationLocked();
boost::optional<bool> isBlockingExternalLockHeld();

// What can be seen of the daemon without a call, which would start it.
struct DaemonTraces {
    bool isRunning = false;
    bool isLockSettingLeft = false; // the settings tell of a lock, and the daemon that gave it has ended
};
DaemonTraces lookForTheDaemon(const dax::Client& client);

} // namespace daxctl
