#include "kvplatform.h"

#include <map>
#include <string>

#include "Border.h"
#include "DeviceFile.h"

namespace {

using Directories = std::map<int, std::string>;

std::string directory(const char* name) {
    return KovanHost::factOf<std::string>(KovanHost::DIRECTORIES, name);
}

// Read once in the life of a process.
const Directories& directories() {
    static const Directories DIRECTORIES = {
        {KVPLATFORM_SHARED_DATA, directory("shared_data")},
        {KVPLATFORM_RESERVED, directory("reserved")},
        {KVPLATFORM_BINARIES, directory("binaries")},
        {KVPLATFORM_USB_MOUNT, directory("usb_mount")},
        {KVPLATFORM_BIG_TEMPORARY_STORAGE, directory("big_temporary_storage")},
        {KVPLATFORM_APPS, directory("apps")},
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
