#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>

#include <nlohmann/json.hpp>

#include "clients_common/ExitStatus.h"
#include "clients_common/Output.h"
#include "host/UsbFile.h"
#include "kovanctl/Commands.h"

namespace kovanctl {

namespace {

using clients_common::Command;
using clients_common::EXIT_DONE;
using KovanHost::UsbStick;
using KovanHost::UsbSticks;
using Json = nlohmann::ordered_json;

constexpr int MOST_ID = 0xffff;

struct Arguments {
    std::string path;
    std::string deviceName;
    std::optional<std::string> serial;
    std::string manufacturer = "Marlow";
    std::string product = "Stick";
    int vendorId = 0x1234;
    int productId = 0x5678;
    std::string id;
};

// The device name without the partition.
std::string diskOf(const std::string& deviceName) {
    return deviceName.substr(0, deviceName.find_first_of("0123456789"));
}

// sda, sdb and so on; sdaa follows sdz.
std::string diskName(std::size_t index) {
    std::string letters;
    for (++index; index > 0; index = (index - 1) / 26) {
        letters.insert(letters.begin(), static_cast<char>('a' + (index - 1) % 26));
    }
    return "sd" + letters;
}

std::string nextFreeName(const UsbSticks& sticks) {
    for (std::size_t index = 0;; ++index) {
        const std::string disk = diskName(index);
        if (std::none_of(sticks.begin(), sticks.end(),
                         [&](const UsbStick& stick) { return diskOf(stick.deviceName) == disk; })) {
            return disk + "1";
        }
    }
}

std::string mountPath(const std::string& text) {
    if (text.empty()) {
        throw clients_common::WrongUsage("the mount path is empty");
    }
    const std::filesystem::path path = std::filesystem::absolute(text).lexically_normal();
    return path.has_filename() ? path : path.parent_path();
}

// An empty text means that the stick does not tell it.
std::optional<std::string> told(const std::string& text) {
    return text.empty() ? std::nullopt : std::optional(text);
}

UsbStick makeStick(const Arguments& arguments, const std::string& deviceName) {
    return {deviceName,
            mountPath(arguments.path),
            told(arguments.serial.value_or("SN-" + diskOf(deviceName))),
            told(arguments.manufacturer),
            told(arguments.product),
            arguments.vendorId,
            arguments.productId};
}

void refuseASecond(const UsbSticks& sticks, const UsbStick& stick) {
    for (const UsbStick& other : sticks) {
        if (other.deviceName == stick.deviceName) {
            throw clients_common::Refusal("'" + stick.deviceName + "': there is such a device already");
        }
        if (other.mountPath == stick.mountPath) {
            throw clients_common::Refusal("'" + *stick.mountPath + "': " + other.deviceName + " is mounted there");
        }
    }
}

Json describe(const UsbStick& stick) {
    const auto orNull = [](const std::optional<std::string>& text) { return text ? Json(*text) : Json(); };
    return {{"id", KovanHost::uniqueIdOf(stick)},
            {"deviceName", stick.deviceName},
            {"mountPath", orNull(stick.mountPath)},
            {"serial", orNull(stick.serial)},
            {"manufacturer", orNull(stick.manufacturer)},
            {"product", orNull(stick.product)},
            {"vendorId", stick.vendorId},
            {"productId", stick.productId}};
}

int plug(const Arguments& arguments, bool json) {
    UsbStick stick;
    KovanHost::changeUsbSticks([&](UsbSticks& sticks) {
        stick = makeStick(arguments, told(arguments.deviceName).value_or(nextFreeName(sticks)));
        refuseASecond(sticks, stick);
        sticks.push_back(stick);
    });
    if (json) {
        clients_common::printJson(describe(stick));
    } else {
        std::cout << KovanHost::uniqueIdOf(stick) << std::endl;
    }
    return EXIT_DONE;
}

int unplug(const std::string& id, bool json) {
    UsbStick stick;
    KovanHost::changeUsbSticks([&](UsbSticks& sticks) {
        const auto found = std::find_if(sticks.begin(), sticks.end(), [&](const UsbStick& candidate) {
            return KovanHost::uniqueIdOf(candidate) == id;
        });
        if (found == sticks.end()) {
            throw clients_common::Refusal("'" + id + "': there is no such stick");
        }
        stick = *found;
        sticks.erase(found);
    });
    if (json) {
        clients_common::printJson(describe(stick));
    }
    return EXIT_DONE;
}

int list(bool json) {
    Json document = Json::array();
    for (const UsbStick& stick : KovanHost::loadUsbSticks()) {
        document.push_back(describe(stick));
        if (!json) {
            std::cout << stick.deviceName << ' ' << KovanHost::uniqueIdOf(stick) << ' ' << stick.mountPath.value_or("")
                      << '\n';
        }
    }
    if (json) {
        clients_common::printJson(document);
    }
    return EXIT_DONE;
}

std::string checkDeviceName(const std::string& text) {
    const auto isFit = [](unsigned char byte) { return std::isalnum(byte) != 0; };
    const bool isName = !text.empty() && std::all_of(text.begin(), text.end(), isFit) && KovanHost::isDeviceName(text);
    return isName ? "" : "a device name has letters, and digits at its end";
}

// Refuses a leading zero, which would make the number octal.
std::string checkNoZeroLeads(const std::string& text) {
    const bool isLeading = text.size() > 1 && text[0] == '0' && std::isdigit(static_cast<unsigned char>(text[1])) != 0;
    return isLeading ? text + " is neither decimal nor behind 0x" : "";
}

void addId(Command& command, const char* name, int& id) {
    command.add(name, id, "Decimal, or hexadecimal after 0x").check(checkNoZeroLeads).within(0, MOST_ID).showsDefault();
}

void addPlugCommand(Command& group, const std::shared_ptr<Arguments>& arguments) {
    Command command = group.addCommand("plug", "Plug a stick in, and print its id",
                                       [=](bool json) { return plug(*arguments, json); });
    command.add("PATH", arguments->path, "Where it is mounted").required();
    command.add("--device-name", arguments->deviceName, "By default sda1, sdb1 and so on, the first that is free")
        .check(checkDeviceName);
    command.add("--serial", arguments->serial, "By default SN- and the device name without its number");
    command.add("--manufacturer", arguments->manufacturer).showsDefault();
    command.add("--product", arguments->product).showsDefault();
    addId(command, "--vendor-id", arguments->vendorId);
    addId(command, "--product-id", arguments->productId);
    command.footer("An empty serial, manufacturer or product is one that the stick does not tell; the id ends there.");
}

} // namespace

void addUsbCommands(Command& program) {
    const auto arguments = std::make_shared<Arguments>();
    Command group = program.addGroup("usb", "The device's USB sticks");
    addPlugCommand(group, arguments);

    Command unplugCommand = group.addCommand("unplug", "Take out the first stick with an id",
                                             [=](bool json) { return unplug(arguments->id, json); });
    unplugCommand.add("ID", arguments->id, "The id, as plug and list print it").required();

    group.addCommand("list", "Print the sticks, one a line: the device name, the id and the mount path",
                     [](bool json) { return list(json); });
}

} // namespace kovanctl
