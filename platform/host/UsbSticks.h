#pragma once

#include <optional>
#include <string>
#include <vector>

namespace KovanHost {

// The USB sticks of the simulated device, and how they are stored as a GLib key file with one group for each stick:
//     [sda1]
//     mount_path=/mnt/usb/drive1
//     serial=SN-sda
//     manufacturer=Marlow
//     product=Stick
//     vendor_id=4660
//     product_id=22136
// The group has the device's name. A missing text is one that the stick does not tell; a missing number is 0.

// One stick; an empty text is one that it does not tell.
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

// Whether only digits follow the first digit; they are the partition. Any other name ends the programs that list
// devices.
bool isDeviceName(const std::string& text);

// The id by which the system finds a stick again: serial, manufacturer, product, vendor id, product id and partition,
// with ":" between them. It ends before the first of them that the stick does not tell.
std::string uniqueIdOf(const UsbStick& stick);

std::string textOf(const UsbSticks& sticks);

// Throws std::runtime_error with the reason when the text is not a key file, a group's name is not a device name, or a
// value is of the wrong type.
UsbSticks parseUsbSticks(const std::string& text);

} // namespace KovanHost
