#include "Platform/SystemAPI/VconfSystemAPI/VConfKeys.h"

#include <gtest/gtest.h>

using namespace DAX::Platform;

namespace {

// Other programs read and write these keys, so their texts must not change.
TEST(VConfKeysTest, NameTheKeysThatSurviveAReboot) {
    EXPECT_STREQ(VCONF_KEY_RETAIL_MODE, "db/menu/support/use_mode");
    EXPECT_STREQ(VCONF_KEY_MAINTENANCE_MODE, "db/menu/maintenance_mode");
    EXPECT_STREQ(VCONF_KEY_PREUPDATE_CONSENT, "db/menu/support/softwareupdate/preupdate_consent");
    EXPECT_STREQ(EXT_APP_CLIENT_ID_VCONF_KEY, "db/menu/support/softwareupdate/ext_app_client_id");
    EXPECT_STREQ(EXT_APP_VERIFICATION_RESULT_VCONF_KEY, "db/menu/support/softwareupdate/ext_app_verification_result");
    EXPECT_STREQ(SUCCESSFUL_UPGRADE_VCONF_KEY, "db/menu/support/softwareupdate/was_successfull_upgrade");
    EXPECT_STREQ(UPGRADE_VERSION_KEY, "db/menu/support/softwareupdate/upgrade_version");
    EXPECT_STREQ(VCONF_IS_ANY_SUBMODEL_STRING_KEY, "db/menu/support/softwareupdate/isAnySubmodel");
    EXPECT_STREQ(VCONF_FLASHED_SUB_MODEL_STRING_KEY, "db/menu/support/softwareupdate/flashedSubmodel");
    EXPECT_STREQ(VCONF_SELECTED_SUB_MODEL_STRING_KEY, "db/menu/support/softwareupdate/selectedSubmodel");
}

TEST(VConfKeysTest, NameTheKeysThatLiveUntilPowerOff) {
    EXPECT_STREQ(POWER_COLD_SHUTDOWN_VCONF_KEY, "memory/boot/cold_poweroff_request_pkg");
    EXPECT_STREQ(MONOPOLY_MODE_INFO_VCONF_KEY, "memory/menu/support/softwareupdate/is_dax_in_monopoly_mode");
    EXPECT_STREQ(VCONF_KEY_MSD_VERSIONS, "memory/menu/support/softwareupdate/msd_versions");
    EXPECT_STREQ(VCONF_KEY_MSD_PATH, "memory/menu/support/softwareupdate/msd_path");
    EXPECT_STREQ(VCONF_KEY_AUTOUPGRADE_TRIGGER_KEY, "memory/menu/support/softwareupdate/autoupgrade_trigger");
    EXPECT_STREQ(OOBE_ACCEPTED_UPGRADE_INFO_DATA_ID_VCONF_KEY,
                 "memory/menu/support/softwareupdate/oobe_accepted_update_info_data_id");
}

} // namespace
