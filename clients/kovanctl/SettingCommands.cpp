#include <iostream>
#include <memory>

#include <nlohmann/json.hpp>

#include "clients_common/ExitStatus.h"
#include "clients_common/Output.h"
#include "clients_common/Printable.h"
#include "host/Settings.h"
#include "kovanctl/Commands.h"
#include "kovanctl/SettingValue.h"

namespace kovanctl {

namespace {

using clients_common::Command;
using clients_common::EXIT_DONE;
using KovanHost::SettingsValue;
using Json = nlohmann::ordered_json;

const char* const KEY_HELP = "The key; it begins with db/, rtc/ or memory/";

struct Arguments {
    std::string key;
    std::string type;
    std::string value;
    std::string prefix;
};

void refuseOn(int error, const std::string& key) {
    if (error != 0) {
        throw clients_common::Refusal("'" + key + "': " + KovanHost::describeSettingsError(error));
    }
}

Json describe(const std::string& key, const SettingsValue& value) {
    return {{"key", key}, {"type", typeOf(value)}, {"value", toJson(value)}};
}

int get(const std::string& key, bool json) {
    SettingsValue value;
    refuseOn(KovanHost::getSetting(key, value), key);
    if (json) {
        clients_common::printJson(describe(key, value));
    } else {
        std::cout << toText(value) << std::endl;
    }
    return EXIT_DONE;
}

int set(const Arguments& arguments, bool json) {
    const SettingsValue value = parseValue(arguments.type, arguments.value);
    refuseOn(KovanHost::setSetting(arguments.key, value), arguments.key);
    if (json) {
        clients_common::printJson(describe(arguments.key, value));
    }
    return EXIT_DONE;
}

int unset(const std::string& key, bool json) {
    refuseOn(KovanHost::unsetSetting(key), key);
    if (json) {
        clients_common::printJson({{"key", key}});
    }
    return EXIT_DONE;
}

void printLine(const std::string& key, const SettingsValue& value) {
    std::cout << clients_common::printable(key) << ' ' << typeOf(value) << ' '
              << clients_common::jsonText(toJson(value)) << '\n';
}

int list(const std::string& prefix, bool json) {
    std::map<std::string, SettingsValue> settings;
    refuseOn(KovanHost::listSettings(prefix, settings), prefix);
    Json document = Json::array();
    for (const auto& [key, value] : settings) {
        if (json) {
            document.push_back(describe(key, value));
        } else {
            printLine(key, value);
        }
    }
    if (json) {
        clients_common::printJson(document);
    }
    return EXIT_DONE;
}

} // namespace

void addSettingCommands(Command& program) {
    const auto arguments = std::make_shared<Arguments>();
    Command group = program.addGroup("setting", "The device's settings store");

    Command getCommand =
        group.addCommand("get", "Print the value of a setting", [=](bool json) { return get(arguments->key, json); });
    getCommand.add("KEY", arguments->key, KEY_HELP).required();

    Command setCommand = group.addCommand("set", "Write a setting; a new type takes the place of an old one",
                                          [=](bool json) { return set(*arguments, json); });
    setCommand.add("KEY", arguments->key, KEY_HELP).required();
    setCommand.add("TYPE", arguments->type, "bool, int, double or string")
        .required()
        .oneOf({"bool", "int", "double", "string"});
    setCommand
        .add("VALUE", arguments->value, "The value; put -- before a value that begins with a dash but is no number")
        .required();

    Command listCommand =
        group.addCommand("list", "Print all settings, one a line: the key, the type and the value, as JSON writes it",
                         [=](bool json) { return list(arguments->prefix, json); });
    listCommand.add("PREFIX", arguments->prefix, "Print only the keys that begin with it");

    Command unsetCommand =
        group.addCommand("unset", "Remove a setting", [=](bool json) { return unset(arguments->key, json); });
    unsetCommand.add("KEY", arguments->key, KEY_HELP).required();
}

} // namespace kovanctl
