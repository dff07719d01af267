#pragma once

#include <optional>
#include <string>
#include <vector>

namespace KovanHost {

// The USB sticks of the simulated device, and how they are written down as a GLib key file, a group for each:
//     [sda1]
//     mount_path=/mnt/usb/drive1
//     serial=SN-sda
//     manufacturer=Marlow
//     product=Stick
//     vendor_id=4660
//     product_id=22136
// The group's name is the device's. A text that is absent is one that the stick does not tell; absent numbers are 0.

struct UsbStick {
    std::string deviceName;
    std::optional<std::string> mountPath;
    std::optional<std::string> serial;
    std::optional<std::string> manufacturer;
    std::optional<std::string> product;
    int vendorId = 0;
    int productId = 0;
};

using UsbSticks = std::vector<UsbStick>; // in the order in which they were plugged in

// Digits alone follow the first digit: they are the partition. The system ends itself over any other name.
bool isDeviceName(const std::string& text);

// The id by which the system finds a stick again: serial, manufacturer, product, vendor id, product id and the number
// of the partition, with ":" between them. It ends where the stick tells nothing.
std::string uniqueIdOf(const UsbStick& stick);

std::string textOf(const UsbSticks& sticks);

// std::runtime_error with the reason when the text is no key file, a group's name is no device name, or a value is of
// the wrong type.
UsbSticks parseUsbSticks(const std::string& text);

} // namespace KovanHost
