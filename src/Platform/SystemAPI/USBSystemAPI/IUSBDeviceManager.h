#pragma once

#include <list>
#include <string>

#include <boost/filesystem/path.hpp>
#include <boost/optional.hpp>

namespace DAX::Platform {

// The mounted USB storage devices. Each has an id by which it is found again after it was chosen: a stick keeps its id
// in another port, and two partitions of one stick have different ids. The debug parameter
// "IUSBDeviceManager::addFakeUsbPath" puts a device that does not exist in front of the others.
//
// Nothing is cached: each call lists the devices afresh. Any thread may call. UsbDeviceInitializer must exist, and what
// follows the first digit of a device's name must be digits, or an assertion fails. Every operation throws
// USBAPIException when the devices cannot be listed, std::logic_error for a device without a mount path, and
// GenericException before the debug parameters are loaded, except on production software, which always has their
// defaults.
class IUSBDeviceManager {
public:
    // Where they are mounted, in the platform's order.
    static std::list<boost::filesystem::path> getUSBMountPaths();

    // Where the first device with this id is mounted; empty when there is none.
    static boost::optional<boost::filesystem::path> getMountPathById(const std::string& id);

    // The id of the first device that is mounted there; empty when there is none.
    static boost::optional<std::string> getMountPathId(const boost::filesystem::path& mountPath);
};

} // namespace DAX::Platform
