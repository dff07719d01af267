#include "Utility/Utils/SingletonsID.h"

#include <map>
#include <stdexcept>

namespace DAX::Common::Utils {
namespace {

const std::map<SingletonsID, std::string>& texts() {
    static const std::map<SingletonsID, std::string> TEXTS = {
        {USER_DATA_REGISTER, "USER_DATA_REGISTER"},
        {TVS_SIGNAL_DISTRIBUTOR, "TVS_SIGNAL_DISTRIBUTOR"},
        {POWER_OFF_CB_DISTRIBUTOR, "POWER_OFF_CB_DISTRIBUTOR"},
        {G_MAIN_LOOP, "G_MAIN_LOOP"},
        {DEBUG_AND_TEST_PARMS, "DEBUG_AND_TEST_PARMS"},
        {INSTALLATION_PERFORMANCE_PARAMS, "INSTALLATION_PERFORMANCE_PARAMS"},
        {SINGLETON_CAMERA_PLUGIN, "SINGLETON_CAMERA_PLUGIN"},
        {SINGLETON_SUBMICOM_PLUGIN, "SINGLETON_SUBMICOM_PLUGIN"},
        {SINGLETON_EXAMPLE_PLUGIN, "SINGLETON_EXAMPLE_PLUGIN"},
        {SINGLETON_INDEPENDENT_FIRMWARE_PLUGIN, "SINGLETON_INDEPENDENT_FIRMWARE_PLUGIN"},
        {SINGLETON_BOOTCLOCK_INITIALIZER, "SINGLETON_BOOTCLOCK_INITIALIZER"},
        {SINGLETON_WAKEUP_ENABLER, "SINGLETON_WAKEUP_ENABLER"},
        {SINGLETON_USB_DEVICE_INITIALIZER, "SINGLETON_USB_DEVICE_INITIALIZER"},
        {SINGLETON_POWER_API_INITIALIZER, "SINGLETON_POWER_API_INITIALIZER"},
        {SINGLETON_USB_CB_DISTRIBUTOR, "SINGLETON_USB_CB_DISTRIBUTOR"},
        {SINGLETON_USB_NFS_MOUNT, "SINGLETON_USB_NFS_MOUNT"},
        {SINGLETON_FENNO_MOUNTER, "SINGLETON_FENNO_MOUNTER"},
        {SINGLETON_OPENSSL_INITIALIZER, "SINGLETON_OPENSSL_INITIALIZER"},
        {SINGLETON_SYSTEM_CONTROL, "SINGLETON_SYSTEM_CONTROL"},
        {DUMMY_SINGLETON, "DUMMY_SINGLETON"},
        {DEPENDENT_DUMMY_SINGLETON, "DEPENDENT_DUMMY_SINGLETON"},
        {PARTITION_MANAGERS_REGISTER, "PARTITION_MANAGERS_REGISTER"},
    };
    return TEXTS;
}

} // namespace

std::string singletonsIdToString(SingletonsID id) {
    try {
        return texts().at(id);
    } catch (const std::out_of_range&) {
        return "Error: singleton identifier not recognized (" + std::to_string(static_cast<std::int32_t>(id)) + ")";
    }
}

std::ostream& operator<<(std::ostream& stream, SingletonsID id) {
    return stream << singletonsIdToString(id);
}

} // namespace DAX::Common::Utils
