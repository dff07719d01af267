#include <climits>
#include <cstdio>
#include <memory>
#include <optional>

#include <device_power.h>
#include <nlohmann/json.hpp>

#include "clients_common/ExitStatus.h"
#include "clients_common/Output.h"
#include "host/PowerFile.h"
#include "host/SimulatedPower.h"
#include "kovanctl/Commands.h"

namespace kovanctl {

namespace {

using clients_common::Command;
using clients_common::EXIT_DONE;
using KovanHost::Power;
using KovanHost::PowerRecord;
using Json = nlohmann::ordered_json;

struct Arguments {
    int mode = 0;
    int number = 0;
    std::optional<int> reason;
};

std::string nameOfState(int state) {
    static const char* const NAMES[] = {"normal", "standby", "suspend", "power off", "restart"};
    return state <= POWER_STATE_RESTART ? NAMES[state] : "unknown";
}

int done(bool json, const Json& document) {
    if (json) {
        clients_common::printJson(document);
    }
    return EXIT_DONE;
}

int changeState(int state, bool json) {
    KovanHost::setPowerState(state);
    return done(json, {{"state", state}});
}

int announcePowerOff(int number, bool json) {
    KovanHost::announcePowerOff(number);
    return done(json, {{"number", number}});
}

int wakeUp(std::optional<int> reason, bool json) {
    return done(json, {{"wakeUpReason", KovanHost::wakeUp(reason)}});
}

Json describe(const Power& power) {
    Json requests = Json::array();
    for (const PowerRecord& request : power.requests) {
        requests.push_back({{"request", request.name}, {"reason", request.number}});
    }
    return {{"state", power.state}, {"wakeUpReason", power.wakeUpReason}, {"requests", requests}};
}

void print(const Power& power) {
    std::printf("state           %d (%s)\n", power.state, nameOfState(power.state).c_str());
    std::printf("wake-up reason  %d\n", power.wakeUpReason);
    if (power.requests.empty()) {
        std::printf("requests        none\n");
    }
    const char* label = "requests";
    for (const PowerRecord& request : power.requests) {
        std::printf("%-16s%s %d\n", label, request.name.c_str(), request.number);
        label = "";
    }
}

int show(bool json) {
    const Power power = KovanHost::loadPower();
    if (!json) {
        print(power);
    }
    return done(json, describe(power));
}

} // namespace

void addPowerCommands(Command& program) {
    const auto arguments = std::make_shared<Arguments>();

    program.addCommand("power", "Print the power state, the wake-up reason, and the requests to restart or power off",
                       [](bool json) { return show(json); });

    Command mode = program.addCommand("power-mode", "Change the power state, and announce it",
                                      [=](bool json) { return changeState(arguments->mode, json); });
    mode.add("N", arguments->mode, "0 normal, 1 standby, 2 suspend, 3 power off, 4 restart").required().within(0, 4);

    Command powerOff = program.addCommand("power-off-signal", "Announce that the device powers off",
                                          [=](bool json) { return announcePowerOff(arguments->number, json); });
    powerOff.add("N", arguments->number, "The number that is announced").required();

    Command wakeUpCommand = program.addCommand("wake-up", "Announce that the device woke up",
                                               [=](bool json) { return wakeUp(arguments->reason, json); });
    wakeUpCommand.add("--reason", arguments->reason, "Store this wake-up reason first").within(0, INT_MAX);
}

} // namespace kovanctl
