#include "kvplatform.h"

#include "Call.h"

const char* kvplatform_getenv(int directory) {
    if (!KovanStubs::works(__func__)) {
        return nullptr;
    }
    switch (directory) {
    case KVPLATFORM_SHARED_DATA:
        return "/usr/share";
    case KVPLATFORM_RESERVED:
        return "/usr/lib";
    case KVPLATFORM_BINARIES:
        return "/usr/bin";
    case KVPLATFORM_USB_MOUNT:
        return "/mnt/usb";
    case KVPLATFORM_BIG_TEMPORARY_STORAGE:
        return "/mnt/temporary";
    case KVPLATFORM_APPS:
        return "/usr/apps";
    default:
        return nullptr;
    }
}
