#include "UsbSticks.h"

#include "KeyFile.h"

namespace KovanHost {

namespace {

constexpr char DIGITS[] = "0123456789";

std::string partitionOf(const std::string& deviceName) {
    const std::size_t digit = deviceName.find_first_of(DIGITS);
    return digit == std::string::npos ? "" : deviceName.substr(digit);
}

struct TextKey {
    const char* name;
    std::optional<std::string> UsbStick::*text;
};

constexpr TextKey TEXT_KEYS[] = {{"mount_path", &UsbStick::mountPath},
                                 {"serial", &UsbStick::serial},
                                 {"manufacturer", &UsbStick::manufacturer},
                                 {"product", &UsbStick::product}};

} // namespace

bool isDeviceName(const std::string& text) {
    return partitionOf(text).find_first_not_of(DIGITS) == std::string::npos;
}

std::string uniqueIdOf(const UsbStick& stick) {
    std::string id;
    for (const auto& text : {stick.serial, stick.manufacturer, stick.product}) {
        if (!text) {
            return id;
        }
        id += *text + ":";
    }
    return id + std::to_string(stick.vendorId) + ":" + std::to_string(stick.productId) + ":" +
           partitionOf(stick.deviceName);
}

std::string textOf(const UsbSticks& sticks) {
    std::string text;
    for (const UsbStick& stick : sticks) {
        text += (text.empty() ? "" : "\n") + groupLine(stick.deviceName);
        for (const TextKey& key : TEXT_KEYS) {
            if (const auto& value = stick.*key.text) {
                text += keyLine(key.name, *value);
            }
        }
        text += keyLine("vendor_id", std::to_string(stick.vendorId));
        text += keyLine("product_id", std::to_string(stick.productId));
    }
    return text;
}

UsbSticks parseUsbSticks(const std::string& text) {
    const KeyFile file(text);
    UsbSticks sticks;
    for (const std::string& name : file.groups()) {
        if (!isDeviceName(name)) {
            throw file.wrongGroup(name, "no device name: digits alone may follow a digit");
        }
        UsbStick stick;
        stick.deviceName = name;
        for (const TextKey& key : TEXT_KEYS) {
            stick.*key.text = file.get<std::string>(name, key.name);
        }
        stick.vendorId = file.get<int>(name, "vendor_id").value_or(0);
        stick.productId = file.get<int>(name, "product_id").value_or(0);
        sticks.push_back(stick);
    }
    return sticks;
}

} // namespace KovanHost
