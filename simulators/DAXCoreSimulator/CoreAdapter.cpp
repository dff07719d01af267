#include "DAXCoreSimulator/CoreAdapter.h"

#include <functional>
#include <map>
#include <thread>
#include <tuple>
#include <type_traits>
#include <utility>

#include <boost/serialization/library_version_type.hpp> // which the next one needs and does not include
#include <boost/serialization/list.hpp>
#include <boost/serialization/optional.hpp>
#include <boost/serialization/set.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "DAXCoreSimulator/ArgumentsAsJson.h"
#include "DAXCoreSimulator/FaultExceptions.h"
#include "DAXCoreSimulator/KnownMethods.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/CoreMethods.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/Introspection.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/MethodRelay.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/RequestBoundary.h"

namespace DAXCoreSimulator {

namespace {

namespace DBUSICore = DAX::DAXIPC::DBUSLowLevel::DBUSNames::DBUSCore::DBUSICore;
namespace CoreMethods = DAX::DAXIPC::DBUSLowLevel::CoreMethods;
namespace RequestBoundary = DAX::DAXIPC::DBUSLowLevel::RequestBoundary;
using DAX::DAXIPC::DBUSLowLevel::methodNames;
using DAX::DAXIPC::DBUSLowLevel::relayCall;
using DAX::DAXIPC::DBUSLowLevel::writeIntrospection;

// One call on its way to the simulated core.
struct Call {
    SimulatedCore& core;
    std::stringstream& in;
    std::stringstream& out;
    std::string sender;
    std::function<void(const nlohmann::ordered_json& arguments)> decoded; // between decoding and calling
};

using Handler = std::function<void(Call& call)>;

template <class Names, class... Values>
nlohmann::ordered_json named(const Names& names, const Values&... values) {
    nlohmann::ordered_json arguments = nlohmann::ordered_json::object();
    [[maybe_unused]] auto name = names.begin(); // used by nothing without values
    ((arguments[*name++] = asJson(values)), ...);
    return arguments;
}

// The entry of a method. Its handler relays a call to an operation of the core, and in between tells of its arguments.
template <const auto& METHOD, class R, class... Args>
std::pair<const std::string, Handler> relayed(R (SimulatedCore::*operation)(const std::string&, Args...)) {
    return {METHOD.name, [operation](Call& call) {
                relayCall<METHOD>(call.in, call.out, [&](std::decay_t<Args>... arguments) {
                    call.decoded(named(METHOD.request.names, arguments...));
                    return (call.core.*operation)(call.sender, std::move(arguments)...);
                });
            }};
}

const std::map<std::string, Handler>& methods() {
    using C = SimulatedCore;
    static const std::map<std::string, Handler> table{
        relayed<CoreMethods::getCurrentVersion>(&C::getCurrentVersion),
        relayed<CoreMethods::getSupportedUpgradeTypes>(&C::getSupportedUpgradeTypes),
        relayed<CoreMethods::scheduleFactoryReset>(&C::scheduleFactoryReset),
        relayed<CoreMethods::createTransaction>(&C::createTransaction),
        relayed<CoreMethods::helloMessage>(&C::helloMessage),
        relayed<CoreMethods::isSearchingPossible>(&C::isSearchingPossible),
        relayed<CoreMethods::startSearching>(&C::startSearching),
        relayed<CoreMethods::startModelsSearching>(&C::startModelsSearching),
        relayed<CoreMethods::getSearchProgress>(&C::getSearchProgress),
        relayed<CoreMethods::getSearchResult>(&C::getSearchResult),
        relayed<CoreMethods::getModelsSearchResult>(&C::getModelsSearchResult),
        relayed<CoreMethods::startInstallation>(&C::startInstallation),
        relayed<CoreMethods::getInstallationProgress>(&C::getInstallationProgress),
        relayed<CoreMethods::startFinalization>(&C::startFinalization),
        relayed<CoreMethods::getFinalizationProgress>(&C::getFinalizationProgress),
        relayed<CoreMethods::cancelCoreTransaction>(&C::cancelCoreTransaction),
    };
    return table;
}

// The part of a fault that comes before the call has an effect.
void strikeBefore(const Fault& fault) {
    std::this_thread::sleep_for(std::chrono::duration<double>(fault.stallSeconds));
    if (fault.death == Fault::Death::BEFORE_REPLY) {
        _exit(CoreAdapter::DEATH_STATUS);
    }
    if (!fault.exception.empty()) {
        raiseException(fault.exception, fault.supportCode, fault.text);
    }
}

} // namespace

bool isCoreMethod(const std::string& name) {
    return methods().count(name) != 0;
}

bool CoreAdapter::handleRequest(const std::string& method, std::stringstream& in, std::stringstream& out,
                                std::string& exceptionName, const char* sender) {
    return RequestBoundary::answer(out, exceptionName,
                                   [&] { serve(method, in, out, sender != nullptr ? sender : ""); });
}

void CoreAdapter::serve(const std::string& method, std::stringstream& in, std::stringstream& out,
                        const std::string& sender) {
    bool isRecorded = false;
    const auto record = [&](const nlohmann::ordered_json& arguments) {
        isRecorded = true;
        m_journal.record(method, sender, arguments);
    };
    try {
        answer(method, in, out, sender, record);
    } catch (...) {
        if (!isRecorded) {
            record(nullptr);
        }
        throw;
    }
}

void CoreAdapter::answer(const std::string& method, std::stringstream& in, std::stringstream& out,
                         const std::string& sender, const Record& record) {
    const Handler& handler = RequestBoundary::find(methods(), method);
    if (method == CoreMethods::createTransaction.name) {
        m_core.refreshScenario();
    }
    const Fault fault = m_core.faultAt(method);
    m_isToDie = fault.death == Fault::Death::AFTER_REPLY;
    Call call{m_core, in, out, sender, [&](const nlohmann::ordered_json& arguments) {
                  record(arguments);
                  strikeBefore(fault);
              }};
    handler(call);
    if (fault.emptyReply) {
        out.str("");
    }
}

void CoreAdapter::introspect(std::stringstream& out) {
    writeIntrospection(out, DBUSICore::INTERFACE_NAME(), methodNames(methods()));
}

} // namespace DAXCoreSimulator
