#pragma once

#include <cstdint>
#include <ostream>
#include <string>

namespace DAX::Common::Utils {

// The ids of the registered singletons of the whole update stack; this daemon has only some of them.
enum SingletonsID : std::int32_t {
    USER_DATA_REGISTER = 0,
    TVS_SIGNAL_DISTRIBUTOR = 1,
    POWER_OFF_CB_DISTRIBUTOR = 2,
    G_MAIN_LOOP = 3,
    DEBUG_AND_TEST_PARMS = 4,
    INSTALLATION_PERFORMANCE_PARAMS = 5,
    SINGLETON_CAMERA_PLUGIN = 6,
    SINGLETON_SUBMICOM_PLUGIN = 7,
    SINGLETON_EXAMPLE_PLUGIN = 8,
    SINGLETON_INDEPENDENT_FIRMWARE_PLUGIN = 9,
    SINGLETON_BOOTCLOCK_INITIALIZER = 10,
    SINGLETON_WAKEUP_ENABLER = 11,
    SINGLETON_USB_DEVICE_INITIALIZER = 12,
    SINGLETON_POWER_API_INITIALIZER = 13,
    SINGLETON_USB_CB_DISTRIBUTOR = 14,
    SINGLETON_USB_NFS_MOUNT = 15,
    SINGLETON_FENNO_MOUNTER = 16,
    SINGLETON_OPENSSL_INITIALIZER = 17,
    SINGLETON_SYSTEM_CONTROL = 18,
    DUMMY_SINGLETON = 19,
    DEPENDENT_DUMMY_SINGLETON = 20,
    PARTITION_MANAGERS_REGISTER = 21
};

// The name of the enumerator; for any other value, a text with the number. Any thread.
std::string singletonsIdToString(SingletonsID id);

// Writes what singletonsIdToString gives.
std::ostream& operator<<(std::ostream& stream, SingletonsID id);

} // namespace DAX::Common::Utils
