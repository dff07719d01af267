#pragma once

#include <optional>
#include <string>

#include <boost/optional.hpp>
#include <nlohmann/json_fwd.hpp>

#include "dax/client.h"

// What keeps a client from the service, as far as it can be seen from outside.
namespace daxctl {

// Who holds the service: {"clientName", "priority", "transactionType"}, or null when nobody does.
nlohmann::ordered_json toJson(const std::optional<dax::Owner>& owner);

// What blocks a request: the owner, the installation lock, a blocking external lock.
std::string whyRefused(const std::optional<dax::Owner>& owner);
std::string whyRefused(const dax::Refusal& refusal);

// What a person can do about a refused request, in a sentence.
std::string whatToDo(const dax::Refusal& refusal);

// Whether a lock that blocks the main application is held, according to the device's settings; empty when this user may
// not read those.
boost::optional<bool> isBlockingExternalLockHeld();

// What can be seen of the daemon without a call, which would start it.
struct DaemonTraces {
    bool isRunning = false;
    bool isLockSettingLeft = false; // the settings tell of a lock, and the daemon that gave it has ended
};
DaemonTraces lookForTheDaemon(const dax::Client& client);

} // namespace daxctl
