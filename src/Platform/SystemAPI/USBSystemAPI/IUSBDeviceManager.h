#pragma once

#include <list>
#include <string>

#include <boost/filesystem/path.hpp>
#include <boost/optional.hpp>

namespace DAX::Platform {

// The mounted USB storage devices. Each has an id that finds it again after it was chosen: a stick keeps it in another
// port, two partitions of one stick differ in it. A debug parameter, "IUSBDeviceManager::addFakeUsbPath", puts a device
// in front that is not there.
//
// Nothing is cached: each call lists the devices afresh. Any thread may call. UsbDeviceInitializer must exist, or an
// assertion fails. Every operation throws USBAPIException when the device fails to list, std::logic_error for a device
// without a mount path, and GenericException before the debug parameters are loaded.
class IUSBDeviceManager {
public:
    // Where they are mounted, in the device's order; none when there are none.
    static std::list<boost::filesystem::path> getUSBMountPaths();

    // Where the first with this id is mounted; nothing when there is none.
    static boost::optional<boost::filesystem::path> getMountPathById(const std::string& id);

    // The id of the first that is mounted there; nothing when there is none.
    static boost::optional<std::string> getMountPathId(const boost::filesystem::path& mountPath);
};

} // namespace DAX::Platform
