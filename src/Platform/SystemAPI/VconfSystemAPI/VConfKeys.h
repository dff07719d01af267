#pragma once

namespace DAX::Platform {

// The keys that have a name. "db/" keys survive a reboot, "memory/" keys live until power-off.

inline constexpr const char* VCONF_KEY_RETAIL_MODE = "db/menu/support/use_mode";
inline constexpr const char* VCONF_KEY_MAINTENANCE_MODE = "db/menu/maintenance_mode";
inline constexpr const char* VCONF_KEY_PREUPDATE_CONSENT = "db/menu/support/softwareupdate/preupdate_consent";
inline constexpr const char* EXT_APP_CLIENT_ID_VCONF_KEY = "db/menu/support/softwareupdate/ext_app_client_id";
inline constexpr const char* EXT_APP_VERIFICATION_RESULT_VCONF_KEY =
    "db/menu/support/softwareupdate/ext_app_verification_result";
inline constexpr const char* SUCCESSFUL_UPGRADE_VCONF_KEY = "db/menu/support/softwareupdate/was_successfull_upgrade";
inline constexpr const char* UPGRADE_VERSION_KEY = "db/menu/support/softwareupdate/upgrade_version";
inline constexpr const char* VCONF_IS_ANY_SUBMODEL_STRING_KEY = "db/menu/support/softwareupdate/isAnySubmodel";
inline constexpr const char* VCONF_FLASHED_SUB_MODEL_STRING_KEY = "db/menu/support/softwareupdate/flashedSubmodel";
inline constexpr const char* VCONF_SELECTED_SUB_MODEL_STRING_KEY = "db/menu/support/softwareupdate/selectedSubmodel";
inline constexpr const char* POWER_COLD_SHUTDOWN_VCONF_KEY = "memory/boot/cold_poweroff_request_pkg";
inline constexpr const char* MONOPOLY_MODE_INFO_VCONF_KEY =
    "memory/menu/support/softwareupdate/is_dax_in_monopoly_mode";
inline constexpr const char* VCONF_KEY_MSD_VERSIONS = "memory/menu/support/softwareupdate/msd_versions";
inline constexpr const char* VCONF_KEY_MSD_PATH = "memory/menu/support/softwareupdate/msd_path";
inline constexpr const char* VCONF_KEY_AUTOUPGRADE_TRIGGER_KEY =
    "memory/menu/support/softwareupdate/autoupgrade_trigger";
inline constexpr const char* OOBE_ACCEPTED_UPGRADE_INFO_DATA_ID_VCONF_KEY =
    "memory/menu/support/softwareupdate/oobe_accepted_update_info_data_id";

} // namespace DAX::Platform
