#include "daxctl/MethodOption.h"

#include "clients_common/CommandLine.h"

namespace daxctl {

using namespace DAX::DAXIPC::DBUSLowLevel;

const MethodDescription& methodNamed(Side side, const std::string& name) {
    if (const MethodDescription* const method = findMethod(side, name)) {
        return *method;
    }
    const Side other = side == Side::SERVICE ? Side::CORE : Side::SERVICE;
    const std::string whose = side == Side::SERVICE ? "The service" : "The core";
    if (findMethod(other, name) != nullptr) {
        throw clients_common::WrongUsage(
            whose + " has no method " + name + ", but the " +
            (other == Side::CORE ? "core has: add --core." : "service has: leave --core out."));
    }
    const std::string nearest = nearestMethod(side, name);
    throw clients_common::WrongUsage(whose + " has no method " + name + "." +
                                     (nearest.empty() ? "" : " Did you mean " + nearest + "?"));
}

} // namespace daxctl
