#include <algorithm>
#include <sstream>
#include <utility>

#include <usb_device.h>

#include "Common/Logging/LoggingStream.h"
#include "Debug/DebugAndTestParameters/DebugAndTestParameters.h"
#include "Platform/ProductPaths/IProductPaths.h"
#include "Platform/SystemAPI/USBSystemAPI/IUSBDeviceManager.h"
#include "Platform/SystemAPI/USBSystemAPI/USBAPIException.h"
#include "Platform/SystemAPI/USBSystemAPI/UsbDeviceInitializer.h"
#include "Utility/Utils/DAXAssert.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/SingletonsRegister.h"

// A null text puts the stream into its failed state, so the id ends before the first field that the device does not
// tell. The function is outside of the namespaces, since the text of the assertion names it that way.
static std::string generate_unique_id(usb_device_h device) {
    static const std::string sep = ":";
    static const std::string digits = "0123456789";
    std::ostringstream id;
    id << usb_device_get_serial(device) << sep << usb_device_get_manufacturer(device) << sep
       << usb_device_get_product(device) << sep << usb_device_get_vendor_id(device) << sep
       << usb_device_get_product_id(device) << sep;
    const char* const name = usb_device_get_devname(device);
    const std::string devname = name != nullptr ? name : "";
    const std::size_t pos = devname.find_first_of(digits);
    if (pos != std::string::npos) {
        BOOST_ASSERT(devname.find_first_not_of(digits, pos) == std::string::npos);
        id << devname.substr(pos);
    }
    return id.str();
}

namespace DAX::Platform {
namespace {

using boost::filesystem::path;
using Common::Utils::errinfo_description;
using Common::Utils::errinfo_errorcode;
using Entry = std::pair<path, std::string>; // the mount path and the id

void throwIfUninitialized() {
    Common::Utils::SingletonsRegister::getSingletonsRegister()
        .getService<UsbDeviceInitializer>("IUSBDeviceManager", UsbDeviceInitializer::getID())
        ->throwIfUninitialized();
}

void free_usb_list(usb_device_list_h list) {
    usb_device_h device = nullptr;
    for (int result = usb_device_list_get_first(list, &device); result == 0 && device != nullptr;
         result = usb_device_list_get_next(list, &device)) {
        free_usb_device_h(device);
    }
    usb_device_free_device_list(list);
}

// The platform's list of devices, for as long as the object lives.
class DeviceList {
public:
    DeviceList() {
        const int result = usb_device_get_device_list(&m_list);
        DAX_LOG(DBG) << "usb_device_get_device_list result : " << result;
        if (result != 0) {
            DAX_THROW(USBAPIException(), errinfo_description("usb_device_get_device_list() failed")
                                             << errinfo_errorcode(result));
        }
    }
    ~DeviceList() { free_usb_list(m_list); }
    DeviceList(const DeviceList&) = delete;
    DeviceList& operator=(const DeviceList&) = delete;

    template <class Visit>
    void forEach(Visit visit) const {
        usb_device_h device = nullptr;
        for (int result = usb_device_list_get_first(m_list, &device); isThere(result, device);
             result = usb_device_list_get_next(m_list, &device)) {
            visit(device);
        }
    }

    int count() const { return usb_device_list_get_count(m_list); }

private:
    static bool isThere(int result, usb_device_h device) {
        if (result != 0) {
            DAX_THROW(USBAPIException(),
                      errinfo_description("usb_device_list_get_first() or usb_device_list_get_next() failed")
                          << errinfo_errorcode(result));
        }
        return device != nullptr;
    }

    usb_device_list_h m_list = nullptr;
};

void addFakeDevice(std::list<Entry>& entries) {
    const path mountPath = IProductPaths::getUSBMountPath() / "fake-usb";
    DAX_LOG(INF) << "Adding fake USB mount path: " << mountPath.string();
    entries.emplace_back(mountPath, "fake-usb");
}

Entry entryOf(usb_device_h device) {
    const std::string mountPath(usb_device_get_mountpath(device));
    const std::string id = generate_unique_id(device);
    DAX_LOG(INF) << "ADDING PATH: '" << mountPath << "' with unique id '" << id << "' to usbPaths list";
    return {mountPath, id};
}

std::list<Entry> get_usb_mount_paths(bool /*isLookup*/) {
    DAX_LOG(DBG) << "Processing get_usb_mount_paths";
    std::list<Entry> entries;
    if (DAXCommon::DebugAndTestParameters::getDebugAndTestParameters().getCustomBoolParam(
            "IUSBDeviceManager::addFakeUsbPath", false)) {
        addFakeDevice(entries);
    }
    throwIfUninitialized();
    const DeviceList devices;
    const int count = devices.count();
    DAX_LOG(INF) << "Number of usb devices found: " << count;
    if (count < 0) {
        DAX_THROW(USBAPIException(), errinfo_description("usb_device_list_get_count() returned negative number.")
                                         << errinfo_errorcode(count));
    }
    devices.forEach([&entries](usb_device_h device) { entries.push_back(entryOf(device)); });
    return entries;
}

} // namespace

std::list<path> IUSBDeviceManager::getUSBMountPaths() {
    DAX_LOG(DBG) << "Processing getUSBMountPaths";
    std::list<path> mountPaths;
    for (const Entry& entry : get_usb_mount_paths(false)) {
        DAX_LOG(DBG) << "USBPATH: '" << entry.first.string() << "'";
        mountPaths.push_back(entry.first);
    }
    return mountPaths;
}

boost::optional<path> IUSBDeviceManager::getMountPathById(const std::string& id) {
    DAX_LOG(DBG) << "Processing getMountPathById";
    const std::list<Entry> entries = get_usb_mount_paths(true);
    const auto found =
        std::find_if(entries.begin(), entries.end(), [&id](const Entry& entry) { return entry.second == id; });
    return found != entries.end() ? boost::make_optional(found->first) : boost::none;
}

boost::optional<std::string> IUSBDeviceManager::getMountPathId(const path& mountPath) {
    const std::list<Entry> entries = get_usb_mount_paths(true);
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&mountPath](const Entry& entry) { return entry.first == mountPath; });
    return found != entries.end() ? boost::make_optional(found->second) : boost::none;
}

} // namespace DAX::Platform
