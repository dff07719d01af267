#include "UsbFile.h"

#include <memory>

#include "KnownFile.h"

namespace KovanHost {

namespace {

KnownFile<UsbSticks>& file() {
    using File = KnownFile<UsbSticks>;
    static File& known = *std::make_unique<File>(File::Form{"run/kovan/usb.ini", parseUsbSticks, textOf},
                                                 File::KEEPS_WHAT_WAS_KNOWN)
                              .release(); // outlives static destructors
    return known;
}

} // namespace

UsbSticks loadUsbSticks() {
    return file().load();
}

UsbSticks knownUsbSticks() {
    return file().known();
}

void changeUsbSticks(const std::function<void(UsbSticks&)>& change) {
    file().change(change);
}

} // namespace KovanHost
