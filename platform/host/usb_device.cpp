#include "usb_device.h"

#include <atomic>
#include <cerrno>
#include <memory>

#include "Border.h"
#include "UsbFile.h"

// A list holds what was plugged in when it was made. It owns its handles, so to free one does nothing.

struct usb_device_s {
    KovanHost::UsbStick stick;
};

struct usb_device_list_s {
    std::vector<usb_device_s> devices;
    std::size_t next = 0; // the position that a walk gives next
};

namespace {

constexpr int FAILED = -1;
constexpr int NOT_INITIALIZED = -EPERM;

std::atomic<int> initializations{0};

int step(usb_device_list_s& list, usb_device_h* device) {
    *device = list.next < list.devices.size() ? &list.devices[list.next++] : nullptr;
    return 0;
}

const char* text(usb_device_h device, std::optional<std::string> KovanHost::UsbStick::*held) {
    return device != nullptr && device->stick.*held ? (device->stick.*held)->c_str() : nullptr;
}

} // namespace

int usb_device_init() {
    ++initializations;
    return 0;
}

int usb_device_fini() {
    int before = initializations;
    while (before > 0 && !initializations.compare_exchange_weak(before, before - 1)) {
    }
    return before > 0 ? 0 : NOT_INITIALIZED;
}

int usb_device_get_device_list(usb_device_list_h* list) {
    if (list == nullptr) {
        return -EINVAL;
    }
    if (initializations == 0) {
        return NOT_INITIALIZED;
    }
    return KovanHost::atBorder(FAILED, [=] {
        auto made = std::make_unique<usb_device_list_s>();
        for (const KovanHost::UsbStick& stick : KovanHost::knownUsbSticks()) {
            made->devices.push_back({stick});
        }
        *list = made.release();
        return 0;
    });
}

int usb_device_free_device_list(usb_device_list_h list) {
    const std::unique_ptr<usb_device_list_s> owned(list);
    return owned ? 0 : -EINVAL;
}

int usb_device_list_get_count(usb_device_list_h list) {
    return list != nullptr ? static_cast<int>(list->devices.size()) : -EINVAL;
}

int usb_device_list_get_first(usb_device_list_h list, usb_device_h* device) {
    if (list == nullptr || device == nullptr) {
        return -EINVAL;
    }
    list->next = 0;
    return step(*list, device);
}

int usb_device_list_get_next(usb_device_list_h list, usb_device_h* device) {
    return list == nullptr || device == nullptr ? -EINVAL : step(*list, device);
}

int free_usb_device_h(usb_device_h device) {
    return device != nullptr ? 0 : -EINVAL;
}

const char* usb_device_get_mountpath(usb_device_h device) {
    return text(device, &KovanHost::UsbStick::mountPath);
}

const char* usb_device_get_devname(usb_device_h device) {
    return device != nullptr ? device->stick.deviceName.c_str() : nullptr;
}

const char* usb_device_get_serial(usb_device_h device) {
    return text(device, &KovanHost::UsbStick::serial);
}

const char* usb_device_get_manufacturer(usb_device_h device) {
    return text(device, &KovanHost::UsbStick::manufacturer);
}

const char* usb_device_get_product(usb_device_h device) {
    return text(device, &KovanHost::UsbStick::product);
}

int usb_device_get_vendor_id(usb_device_h device) {
    return device != nullptr ? device->stick.vendorId : -EINVAL;
}

int usb_device_get_product_id(usb_device_h device) {
    return device != nullptr ? device->stick.productId : -EINVAL;
}
