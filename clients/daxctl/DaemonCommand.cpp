#include "daxctl/DaemonCommand.h"

#include <cstdio>

#include <boost/exception/exception.hpp>
#include <nlohmann/json.hpp>

#include "clients_common/ExitStatus.h"
#include "clients_common/Output.h"
#include "dax/client.h"
#include "daxctl/Failure.h"

namespace daxctl {

namespace {

int report(const Failure& failure, bool json) {
    std::fprintf(stderr, "daxctl: %s\n", failure.toString().c_str());
    if (json) {
        clients_common::printJson({{"error", failure.toJson()}, {"kind", clients_common::KIND_FAILED}});
    }
    return clients_common::EXIT_REFUSED;
}

} // namespace

clients_common::Command addDaemonCommand(clients_common::Command& parent, const std::string& name,
                                         const std::string& description, const std::function<int(bool json)>& action) {
    const auto reporting = [action](bool json) -> int {
        try {
            return action(json);
        } catch (const dax::Failure&) { // of the daemon, the core or the bus
            return report(describeCurrentException(), json);
        } catch (const boost::exception&) { // of the device's files and settings
            return report(describeCurrentException(), json);
        }
    };
    return parent.addCommand(name, description, reporting);
}

} // namespace daxctl
