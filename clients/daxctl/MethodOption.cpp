#include "daxctl/MethodOption.h"

#include <vector>

#include "clients_common/CommandLine.h"
#include "clients_common/NearestWord.h"

namespace daxctl {

using namespace DAX::DAXIPC::DBUSLowLevel;

namespace {

std::vector<std::string> namesOf(Side side) {
    std::vector<std::string> names;
    for (const MethodDescription& method : methodsOf(side)) {
        names.push_back(method.name);
    }
    return names;
}

} // namespace

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
    const auto nearest = clients_common::nearestWord(name, namesOf(side));
    throw clients_common::WrongUsage(whose + " has no method " + name + "." +
                                     (nearest ? " Did you mean " + *nearest + "?" : ""));
}

} // namespace daxctl
