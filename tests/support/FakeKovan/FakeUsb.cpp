#include <cstdio>
#include <cstdlib>
#include <memory>

#include <usb_device.h>

#include "support/FakeKovan/State.h"

struct usb_device_s {
    FakeKovan::UsbDevice device;
    bool isFree = false;
};

struct usb_device_list_s {
    std::vector<usb_device_s> devices;
    int next = 0; // the position that a walk gives next
};

namespace FakeKovan {
namespace {

void record(const std::string& call) {
    locked([&](State::Content& content) { content.journal.push_back("usb " + call); });
}

State::Usb usb() {
    return locked([](State::Content& content) { return content.usb; });
}

// Ends the test when the handle was freed already.
usb_device_s& alive(usb_device_h device) {
    if (device->isFree) {
        std::fputs("FakeKovan: a freed USB device is used\n", stderr);
        std::abort();
    }
    return *device;
}

int step(usb_device_list_h list, usb_device_h* device) {
    const int position = list->next++;
    const State::Usb told = usb();
    if (told.walkFailure && told.walkFailure->first == position) {
        return told.walkFailure->second;
    }
    const bool isThere = position < static_cast<int>(list->devices.size());
    *device = isThere ? &list->devices[static_cast<std::size_t>(position)] : nullptr;
    return 0;
}

const char* text(const std::optional<std::string>& held) {
    return held ? held->c_str() : nullptr;
}

} // namespace

void setUsbDevices(const std::vector<UsbDevice>& devices) {
    locked([&](State::Content& content) { content.usb.devices = devices; });
}

void setUsbInitResult(int result) {
    locked([=](State::Content& content) { content.usb.initResult = result; });
}

void setUsbListResult(int result) {
    locked([=](State::Content& content) { content.usb.listResult = result; });
}

void setUsbCount(int count) {
    locked([=](State::Content& content) { content.usb.count = count; });
}

void failUsbWalk(int position, int result) {
    locked([=](State::Content& content) { content.usb.walkFailure = {position, result}; });
}

} // namespace FakeKovan

using FakeKovan::alive;

int usb_device_init() {
    FakeKovan::record("init");
    return FakeKovan::usb().initResult;
}

int usb_device_fini() {
    FakeKovan::record("fini");
    return 0;
}

int usb_device_get_device_list(usb_device_list_h* list) {
    FakeKovan::record("get_device_list");
    const FakeKovan::State::Usb told = FakeKovan::usb();
    if (told.listResult != 0) {
        return told.listResult;
    }
    auto made = std::make_unique<usb_device_list_s>();
    for (const FakeKovan::UsbDevice& device : told.devices) {
        made->devices.push_back({device, false});
    }
    *list = made.release();
    return 0;
}

int usb_device_free_device_list(usb_device_list_h list) {
    const std::unique_ptr<usb_device_list_s> owned(list);
    FakeKovan::record("free_device_list");
    return 0;
}

int usb_device_list_get_count(usb_device_list_h list) {
    return FakeKovan::usb().count.value_or(static_cast<int>(list->devices.size()));
}

int usb_device_list_get_first(usb_device_list_h list, usb_device_h* device) {
    list->next = 0;
    return FakeKovan::step(list, device);
}

int usb_device_list_get_next(usb_device_list_h list, usb_device_h* device) {
    return FakeKovan::step(list, device);
}

int free_usb_device_h(usb_device_h device) {
    FakeKovan::record("free_device " + alive(device).device.devname.value_or(""));
    device->isFree = true;
    return 0;
}

const char* usb_device_get_mountpath(usb_device_h device) {
    return FakeKovan::text(alive(device).device.mountPath);
}

const char* usb_device_get_devname(usb_device_h device) {
    return FakeKovan::text(alive(device).device.devname);
}

const char* usb_device_get_serial(usb_device_h device) {
    return FakeKovan::text(alive(device).device.serial);
}

const char* usb_device_get_manufacturer(usb_device_h device) {
    return FakeKovan::text(alive(device).device.manufacturer);
}

const char* usb_device_get_product(usb_device_h device) {
    return FakeKovan::text(alive(device).device.product);
}

int usb_device_get_vendor_id(usb_device_h device) {
    return alive(device).device.vendorId;
}

int usb_device_get_product_id(usb_device_h device) {
    return alive(device).device.productId;
}
