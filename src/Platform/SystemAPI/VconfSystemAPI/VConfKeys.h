#pragma once

#include <string>
#include <type_traits>

namespace DAX::Platform {

// Who writes a key. The others only read it, or wait for it to change.
enum class VConfWriter { OTHER_PROGRAMS, SYSTEM_CONTROL, SYSTEM_INFO, SERVICE_LOGIC };

// One key of the settings store with all that this stack knows of it. T is the type of its value: bool, int or
// std::string. It carries no default: reading it throws when the store fails.
template <class T>
struct VConfKey {
    constexpr VConfKey(const char* text, VConfWriter whoWrites) : name(text), writer(whoWrites) {}

    constexpr operator const char*() const { return name; }

    const char* name;
    VConfWriter writer;
};

// A key with a default, which stands for a value that cannot be read.
template <class T>
struct VConfKeyWithDefault : VConfKey<T> {
    using Default = std::conditional_t<std::is_same_v<T, std::string>, const char*, T>;

    constexpr VConfKeyWithDefault(const char* text, VConfWriter whoWrites, Default value)
        : VConfKey<T>(text, whoWrites), defaultValue(value) {}

    Default defaultValue;
};

// Every key that this stack reads or writes; no name of one stands anywhere else. "db/" keys survive a reboot,
// "memory/" keys live until power-off.

// What the user and the service menu have chosen.
inline constexpr VConfKeyWithDefault<int> VCONF_KEY_RETAIL_MODE = {"db/menu/support/use_mode",
                                                                   VConfWriter::OTHER_PROGRAMS, 0};
inline constexpr VConfKeyWithDefault<int> VCONF_KEY_MAINTENANCE_MODE = {"db/menu/maintenance_mode",
                                                                        VConfWriter::OTHER_PROGRAMS, 0};
inline constexpr VConfKey<int> VCONF_KEY_TERMS_ACCEPTED = {"db/menu/home_deck/homedatacontrol/defaultdisclaimeragree",
                                                           VConfWriter::OTHER_PROGRAMS};
inline constexpr VConfKey<int> VCONF_KEY_HIGH_CONTRAST = {"db/menu/system/accessibility/highcontrast",
                                                          VConfWriter::OTHER_PROGRAMS};
inline constexpr VConfKeyWithDefault<int> VCONF_KEY_TIME_TO_TAKE_ACTION = {"db/menu/time-to-take-action",
                                                                           VConfWriter::OTHER_PROGRAMS, 0};
inline constexpr VConfKeyWithDefault<int> VCONF_KEY_USE_CELLULAR = {"db/menu/support/softwareupdate/use_cellular_int",
                                                                    VConfWriter::OTHER_PROGRAMS, 0};
inline constexpr VConfKeyWithDefault<bool> VCONF_KEY_STANDALONE_OTN = {
    "db/menu/support/softwareupdate/enable_standaloneOTN", VConfWriter::OTHER_PROGRAMS, false};
inline constexpr VConfKey<int> VCONF_KEY_AUTOUPDATE = {"db/menu/support/softwareupdate/autoupdate",
                                                       VConfWriter::OTHER_PROGRAMS};
inline constexpr VConfKeyWithDefault<int> VCONF_KEY_PREUPDATE_CONSENT = {
    "db/menu/support/softwareupdate/preupdate_consent", VConfWriter::SYSTEM_CONTROL, 0};
inline constexpr VConfKeyWithDefault<bool> VCONF_KEY_BACKGROUND_UPDATE = {"db/ep-common/otn_onetime_update",
                                                                          VConfWriter::SYSTEM_CONTROL, false};

// What the device is known by, and whom it asks.
inline constexpr VConfKey<std::string> VCONF_KEY_DUID = {"db/comss/hwduid", VConfWriter::OTHER_PROGRAMS};
inline constexpr VConfKey<std::string> VCONF_KEY_ATOKEN = {"db/comss/atoken", VConfWriter::OTHER_PROGRAMS};
inline constexpr VConfKey<std::string> VCONF_KEY_FIRMWARE_VERSION = {"db/comss/infolinkversion",
                                                                     VConfWriter::OTHER_PROGRAMS};
inline constexpr VConfKeyWithDefault<std::string> VCONF_KEY_COUNTRY_CODE = {"db/comss/countrycode",
                                                                            VConfWriter::OTHER_PROGRAMS, ""};
inline constexpr VConfKeyWithDefault<std::string> VCONF_KEY_OTN_URL = {"rtc/db/comss/gpmurl/otn",
                                                                       VConfWriter::OTHER_PROGRAMS, ""};

// The external application that verifies an upgrade.
inline constexpr VConfKey<std::string> EXT_APP_CLIENT_ID_VCONF_KEY = {
    "db/menu/support/softwareupdate/ext_app_client_id", VConfWriter::SYSTEM_CONTROL};
inline constexpr VConfKey<int> EXT_APP_VERIFICATION_RESULT_VCONF_KEY = {
    "db/menu/support/softwareupdate/ext_app_verification_result", VConfWriter::SYSTEM_CONTROL};

// What upgrades leave behind.
inline constexpr VConfKey<int> SUCCESSFUL_UPGRADE_VCONF_KEY = {"db/menu/support/softwareupdate/was_successfull_upgrade",
                                                               VConfWriter::SYSTEM_CONTROL};
inline constexpr VConfKey<std::string> UPGRADE_VERSION_KEY = {"db/menu/support/softwareupdate/upgrade_version",
                                                              VConfWriter::SYSTEM_INFO};
inline constexpr VConfKeyWithDefault<bool> VCONF_IS_ANY_SUBMODEL_STRING_KEY = {
    "db/menu/support/softwareupdate/isAnySubmodel", VConfWriter::SYSTEM_INFO, false};
inline constexpr VConfKeyWithDefault<std::string> VCONF_FLASHED_SUB_MODEL_STRING_KEY = {
    "db/menu/support/softwareupdate/flashedSubmodel", VConfWriter::SYSTEM_INFO, ""};
inline constexpr VConfKeyWithDefault<std::string> VCONF_SELECTED_SUB_MODEL_STRING_KEY = {
    "db/menu/support/softwareupdate/selectedSubmodel", VConfWriter::SYSTEM_INFO, ""};

// What goes on until power-off.
inline constexpr VConfKey<std::string> POWER_COLD_SHUTDOWN_VCONF_KEY = {"memory/boot/cold_poweroff_request_pkg",
                                                                        VConfWriter::SYSTEM_CONTROL};
inline constexpr VConfKey<int> VCONF_KEY_AUTOUPDATE_STATUS = {"memory/menu/support/softwareupdate/autoupdate_status",
                                                              VConfWriter::SYSTEM_CONTROL};
inline constexpr VConfKeyWithDefault<int> VCONF_KEY_AUTOUPDATE_SPECIAL_MODE = {
    "memory/menu/support/softwareupdate/autoupdate_special_mode", VConfWriter::SYSTEM_CONTROL, 0};
inline constexpr VConfKey<std::string> VCONF_KEY_AUTOUPGRADE_TRIGGER_KEY = {
    "memory/menu/support/softwareupdate/autoupgrade_trigger", VConfWriter::SYSTEM_CONTROL};
inline constexpr VConfKey<std::string> VCONF_KEY_USBUI_STATUS = {"memory/menu/support/softwareupdate/usbui_status",
                                                                 VConfWriter::SYSTEM_CONTROL};
inline constexpr VConfKey<int> VCONF_KEY_USBUI_PROGRESS = {"memory/menu/support/softwareupdate/usbui_progress",
                                                           VConfWriter::SYSTEM_CONTROL};
inline constexpr VConfKey<bool> MONOPOLY_MODE_INFO_VCONF_KEY = {
    "memory/menu/support/softwareupdate/is_dax_in_monopoly_mode", VConfWriter::SYSTEM_CONTROL};
inline constexpr VConfKeyWithDefault<std::string> VCONF_KEY_MSD_VERSIONS = {
    "memory/menu/support/softwareupdate/msd_versions", VConfWriter::SYSTEM_INFO, ""};
inline constexpr VConfKeyWithDefault<std::string> VCONF_KEY_MSD_PATH = {"memory/menu/support/softwareupdate/msd_path",
                                                                        VConfWriter::SYSTEM_INFO, ""};
inline constexpr VConfKeyWithDefault<std::string> OOBE_ACCEPTED_UPGRADE_INFO_DATA_ID_VCONF_KEY = {
    "memory/menu/support/softwareupdate/oobe_accepted_update_info_data_id", VConfWriter::SYSTEM_CONTROL, ""};

// What the service tells other programs: whether a lock that blocks the main application is held (1 or 0), that an
// installation is about to be locked (0), and the priority of the client that has the service (-1 for nobody).
inline constexpr VConfKey<int> VCONF_KEY_EXTERNAL_LOCK_ACQUIRED = {
    "memory/menu/support/softwareupdate/isExternalLockAcquired", VConfWriter::SERVICE_LOGIC};
inline constexpr VConfKey<int> VCONF_KEY_INSTALLATION_LOCK_RELEASED = {
    "memory/menu/support/softwareupdate/isInstallationLockReleased", VConfWriter::SERVICE_LOGIC};
inline constexpr VConfKey<int> VCONF_KEY_CURRENT_CLIENT_PRIORITY = {
    "memory/menu/support/softwareupdate/currentServiceClientPriority", VConfWriter::SERVICE_LOGIC};

} // namespace DAX::Platform
