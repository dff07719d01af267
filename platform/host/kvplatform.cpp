#include "kvplatform.h"

#include "Border.h"
#include "DeviceFile.h"

#include <map>
#include <string>

namespace {

using Directories = std::map<int, std::string>;

std::string directory(const char* key, const char* fallback) {
    return KovanHost::deviceText("directories", key, fallback);
}

// Read once in a process.
const Directories& directories() {
    static const Directories DIRECTORIES = {
        {KVPLATFORM_SHARED_DATA, directory("shared_data", "/usr/share")},
        {KVPLATFORM_RESERVED, directory("reserved", "/usr/lib")},
        {KVPLATFORM_BINARIES, directory("binaries", "/usr/bin")},
        {KVPLATFORM_USB_MOUNT, directory("usb_mount", "/mnt/usb")},
        {KVPLATFORM_BIG_TEMPORARY_STORAGE, directory("big_temporary_storage", "/mnt/temporary")},
        {KVPLATFORM_APPS, directory("apps", "/usr/apps")},
    };
    return DIRECTORIES;
}

} // namespace

const char* kvplatform_getenv(int directory) {
    return KovanHost::atBorder(static_cast<const char*>(nullptr), [directory]() -> const char* {
        const auto found = directories().find(directory);
        return found != directories().end() ? found->second.c_str() : nullptr;
    });
}
