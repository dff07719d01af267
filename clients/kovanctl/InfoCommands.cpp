#include <algorithm>
#include <charconv>
#include <iostream>
#include <memory>
#include <optional>

#include <nlohmann/json.hpp>

#include "clients_common/ExitStatus.h"
#include "clients_common/Output.h"
#include "host/DeviceFile.h"
#include "kovanctl/Commands.h"
#include "kovanctl/SettingValue.h"

namespace kovanctl {

namespace {

using clients_common::Command;
using clients_common::EXIT_DONE;
using KovanHost::DeviceFact;
using KovanHost::KeyFile;
using KovanHost::SettingsValue;
using Json = nlohmann::ordered_json;

const char* const KEY_HELP = "The key, GROUP/NAME as in etc/kovan/device.ini; info list shows those with a default";

struct Arguments {
    std::string key;
    std::string value;
    std::string prefix;
};

struct Key {
    std::string group;
    std::string name;
};

struct Info {
    std::string key;
    SettingsValue value;
    bool isGiven; // by the device file
};

Key parseKey(const std::string& text) {
    const std::size_t slash = std::min(text.find('/'), text.size());
    return {text.substr(0, slash), text.substr(std::min(slash + 1, text.size()))};
}

std::string textOf(const Key& key) {
    return key.group + "/" + key.name;
}

bool isNumberWithoutName(const std::string& text) {
    int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return std::to_string(number) == text && KovanHost::findFact(number) == nullptr;
}

// A fact without a default: only the device file can have it.
bool isFreeKey(const Key& key) {
    return (key.group == KovanHost::FEATURES && !key.name.empty()) ||
           (key.group == KovanHost::SYSTEM_INFO && isNumberWithoutName(key.name));
}

// Whether programs ask for the fact by a function that can fail.
bool canFail(const Key& key) {
    const bool isAsked =
        key.group == KovanHost::SYSTEM_INFO || key.group == KovanHost::FEATURES || key.group == KovanHost::PLANTCFG;
    return isFreeKey(key) || (isAsked && KovanHost::findFact(key.group, key.name) != nullptr);
}

// The fact with its type and default; empty when the key has none.
std::optional<DeviceFact> findFact(const Key& key) {
    if (const DeviceFact* const fact = KovanHost::findFact(key.group, key.name)) {
        return *fact;
    }
    const Key asked = parseKey(key.name);
    return key.group == KovanHost::RESULTS && canFail(asked)
               ? std::optional<DeviceFact>(KovanHost::resultFact(asked.group, asked.name))
               : std::nullopt;
}

SettingsValue toSettingsValue(const KovanHost::FactValue& value) {
    return std::visit([](const auto& held) { return SettingsValue(held); }, value);
}

// The text; a value that is not a text as it is written in the file.
std::string givenText(const KeyFile& device, const Key& key) {
    try {
        return device.get<std::string>(key.group, key.name).value_or("");
    } catch (const std::runtime_error&) {
        return device.raw(key.group, key.name).value_or("");
    }
}

std::optional<Info> find(const KeyFile& device, const Key& key) {
    const bool isGiven = device.raw(key.group, key.name).has_value();
    if (const std::optional<DeviceFact> fact = findFact(key)) {
        return Info{textOf(key), toSettingsValue(KovanHost::valueOf(*fact)), isGiven};
    }
    return isGiven && isFreeKey(key) ? std::optional<Info>({textOf(key), givenText(device, key), true}) : std::nullopt;
}

// The facts with a default, followed by the others that the file has.
std::vector<Info> findAll(const KeyFile& device) {
    std::vector<Key> keys;
    for (const DeviceFact& fact : KovanHost::deviceFacts()) {
        keys.push_back({fact.group, fact.name});
    }
    for (const char* group : {KovanHost::SYSTEM_INFO, KovanHost::FEATURES, KovanHost::RESULTS}) {
        for (const std::string& name : device.keys(group)) {
            if (KovanHost::findFact(group, name) == nullptr) {
                keys.push_back({group, name});
            }
        }
    }
    std::vector<Info> infos;
    for (const Key& key : keys) {
        if (const std::optional<Info> info = find(device, key)) {
            infos.push_back(*info);
        }
    }
    return infos;
}

Json describe(const Info& info) {
    return {{"key", info.key}, {"type", typeOf(info.value)}, {"value", toJson(info.value)}, {"given", info.isGiven}};
}

[[noreturn]] void refuseUnknown(const std::string& key) {
    throw clients_common::Refusal("'" + key + "': there is no such fact");
}

int get(const std::string& key, bool json) {
    const std::optional<Info> info = find(KovanHost::loadDevice(), parseKey(key));
    if (!info) {
        refuseUnknown(key);
    }
    if (json) {
        clients_common::printJson(describe(*info));
    } else {
        std::cout << toText(info->value) << std::endl;
    }
    return EXIT_DONE;
}

SettingsValue parseFact(const std::string& keyText, const std::string& text) {
    const Key key = parseKey(keyText);
    if (const std::optional<DeviceFact> fact = findFact(key)) {
        return parseValue(typeOf(toSettingsValue(fact->fallback)), text);
    }
    if (!isFreeKey(key)) {
        refuseUnknown(keyText);
    }
    return text;
}

int set(const Arguments& arguments, bool json) {
    const Key key = parseKey(arguments.key);
    const SettingsValue value = parseFact(arguments.key, arguments.value);
    KovanHost::changeDevice([&](KeyFile& device) { device.set(key.group, key.name, toText(value)); });
    if (json) {
        clients_common::printJson(describe({arguments.key, value, true}));
    }
    return EXIT_DONE;
}

int list(const std::string& prefix, bool json) {
    Json document = Json::array();
    for (const Info& info : findAll(KovanHost::loadDevice())) {
        if (info.key.compare(0, prefix.size(), prefix) == 0) {
            document.push_back(describe(info));
        }
    }
    if (json) {
        clients_common::printJson(document);
        return EXIT_DONE;
    }
    for (const Json& info : document) {
        std::cout << info["key"].get<std::string>() << ' ' << info["type"].get<std::string>() << ' '
                  << clients_common::jsonText(info["value"]) << '\n';
    }
    return EXIT_DONE;
}

int init(bool force, bool json) {
    KovanHost::writeDefaultDevice(force);
    if (json) {
        clients_common::printJson({{"path", KovanHost::devicePath()}});
    } else {
        std::cout << KovanHost::devicePath() << std::endl;
    }
    return EXIT_DONE;
}

} // namespace

void addInfoCommands(Command& program) {
    const auto arguments = std::make_shared<Arguments>();
    Command group = program.addGroup("info", "The device's facts");

    Command getCommand =
        group.addCommand("get", "Print the value of a fact", [=](bool json) { return get(arguments->key, json); });
    getCommand.add("KEY", arguments->key, KEY_HELP).required();

    Command setCommand = group.addCommand("set", "Write a fact into the device file; all other lines stay",
                                          [=](bool json) { return set(*arguments, json); });
    setCommand.add("KEY", arguments->key, KEY_HELP).required();
    setCommand
        .add("VALUE", arguments->value, "The value; put -- before a value that begins with a dash but is no number")
        .required();

    Command listCommand =
        group.addCommand("list", "Print all facts, one a line: the key, the type and the value, as JSON writes it",
                         [=](bool json) { return list(arguments->prefix, json); });
    listCommand.add("PREFIX", arguments->prefix, "Print only the keys that begin with it");
}

void addDeviceCommands(Command& program) {
    const auto force = std::make_shared<bool>(false);
    Command group = program.addGroup("device", "The device file, etc/kovan/device.ini");

    Command initCommand = group.addCommand("init", "Write a file with all the defaults, and with comments",
                                           [=](bool json) { return init(*force, json); });
    initCommand.addFlag("--force", *force, "Replace a file that exists");
}

} // namespace kovanctl
