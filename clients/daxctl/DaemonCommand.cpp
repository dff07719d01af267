#include "daxctl/DaemonCommand.h"

#include <cstdio>

#include <boost/exception/exception.hpp>

#include "clients_common/ExitStatus.h"
#include "clients_common/Output.h"
#include "daxctl/Failure.h"

namespace daxctl {

CLI::App& addDaemonCommand(CLI::App& parent, clients_common::CommandLine& line, const std::string& name,
                           const std::string& description, const std::function<int()>& action) {
    const auto reporting = [&line, action]() -> int {
        try {
            return action();
        } catch (const boost::exception&) {
            const Failure failure = describeCurrentException();
            std::fprintf(stderr, "daxctl: %s\n", failure.toString().c_str());
            if (line.json) {
                clients_common::printJson({{"error", failure.toJson()}});
            }
            return clients_common::EXIT_REFUSED;
        }
    };
    return clients_common::addCommand(parent, line, name, description, reporting);
}

} // namespace daxctl
