#include "Platform/SystemAPI/VconfSystemAPI/VConfKeys.h"

#include <cctype>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/SystemAPI/VconfSystemAPI/IVConf.h"
#include "support/FakeKovan.h"

using namespace DAX::Platform;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using AnyKey = std::variant<VConfKey<bool>, VConfKey<int>, VConfKey<std::string>, VConfKeyWithDefault<bool>,
                            VConfKeyWithDefault<int>, VConfKeyWithDefault<std::string>>;

// A key of the catalogue beside what other programs rely on: its text, the type of its value, and who writes it.
struct Agreement {
    AnyKey key;
    std::string name;
    FakeKovan::Value defaultValue; // of the key's type; what a key without a default has here does not matter
    bool hasDefault;
    VConfWriter writer;
};

std::vector<Agreement> agreements() {
    return {
        {VCONF_KEY_RETAIL_MODE, "db/menu/support/use_mode", 0, true, VConfWriter::OTHER_PROGRAMS},
        {VCONF_KEY_MAINTENANCE_MODE, "db/menu/maintenance_mode", 0, true, VConfWriter::OTHER_PROGRAMS},
        {VCONF_KEY_TERMS_ACCEPTED, "db/menu/home_deck/homedatacontrol/defaultdisclaimeragree", 0, false,
         VConfWriter::OTHER_PROGRAMS},
        {VCONF_KEY_HIGH_CONTRAST, "db/menu/system/accessibility/highcontrast", 0, false, VConfWriter::OTHER_PROGRAMS},
        {VCONF_KEY_TIME_TO_TAKE_ACTION, "db/menu/time-to-take-action", 0, true, VConfWriter::OTHER_PROGRAMS},
        {VCONF_KEY_USE_CELLULAR, "db/menu/support/softwareupdate/use_cellular_int", 0, true,
         VConfWriter::OTHER_PROGRAMS},
        {VCONF_KEY_STANDALONE_OTN, "db/menu/support/softwareupdate/enable_standaloneOTN", false, true,
         VConfWriter::OTHER_PROGRAMS},
        {VCONF_KEY_AUTOUPDATE, "db/menu/support/softwareupdate/autoupdate", 0, false, VConfWriter::OTHER_PROGRAMS},
        {VCONF_KEY_PREUPDATE_CONSENT, "db/menu/support/softwareupdate/preupdate_consent", 0, true,
         VConfWriter::SYSTEM_CONTROL},
        {VCONF_KEY_BACKGROUND_UPDATE, "db/ep-common/otn_onetime_update", false, true, VConfWriter::SYSTEM_CONTROL},
        {VCONF_KEY_DUID, "db/comss/hwduid", std::string(), false, VConfWriter::OTHER_PROGRAMS},
        {VCONF_KEY_ATOKEN, "db/comss/atoken", std::string(), false, VConfWriter::OTHER_PROGRAMS},
        {VCONF_KEY_FIRMWARE_VERSION, "db/comss/infolinkversion", std::string(), false, VConfWriter::OTHER_PROGRAMS},
        {VCONF_KEY_COUNTRY_CODE, "db/comss/countrycode", std::string(), true, VConfWriter::OTHER_PROGRAMS},
        {VCONF_KEY_OTN_URL, "rtc/db/comss/gpmurl/otn", std::string(), true, VConfWriter::OTHER_PROGRAMS},
        {EXT_APP_CLIENT_ID_VCONF_KEY, "db/menu/support/softwareupdate/ext_app_client_id", std::string(), false,
         VConfWriter::SYSTEM_CONTROL},
        {EXT_APP_VERIFICATION_RESULT_VCONF_KEY, "db/menu/support/softwareupdate/ext_app_verification_result", 0, false,
         VConfWriter::SYSTEM_CONTROL},
        {SUCCESSFUL_UPGRADE_VCONF_KEY, "db/menu/support/softwareupdate/was_successfull_upgrade", 0, false,
         VConfWriter::SYSTEM_CONTROL},
        {UPGRADE_VERSION_KEY, "db/menu/support/softwareupdate/upgrade_version", std::string(), false,
         VConfWriter::SYSTEM_INFO},
        {VCONF_IS_ANY_SUBMODEL_STRING_KEY, "db/menu/support/softwareupdate/isAnySubmodel", false, true,
         VConfWriter::SYSTEM_INFO},
        {VCONF_FLASHED_SUB_MODEL_STRING_KEY, "db/menu/support/softwareupdate/flashedSubmodel", std::string(), true,
         VConfWriter::SYSTEM_INFO},
        {VCONF_SELECTED_SUB_MODEL_STRING_KEY, "db/menu/support/softwareupdate/selectedSubmodel", std::string(), true,
         VConfWriter::SYSTEM_INFO},
        {POWER_COLD_SHUTDOWN_VCONF_KEY, "memory/boot/cold_poweroff_request_pkg", std::string(), false,
         VConfWriter::SYSTEM_CONTROL},
        {VCONF_KEY_AUTOUPDATE_STATUS, "memory/menu/support/softwareupdate/autoupdate_status", 0, false,
         VConfWriter::SYSTEM_CONTROL},
        {VCONF_KEY_AUTOUPDATE_SPECIAL_MODE, "memory/menu/support/softwareupdate/autoupdate_special_mode", 0, true,
         VConfWriter::SYSTEM_CONTROL},
        {VCONF_KEY_AUTOUPGRADE_TRIGGER_KEY, "memory/menu/support/softwareupdate/autoupgrade_trigger", std::string(),
         false, VConfWriter::SYSTEM_CONTROL},
        {VCONF_KEY_USBUI_STATUS, "memory/menu/support/softwareupdate/usbui_status", std::string(), false,
         VConfWriter::SYSTEM_CONTROL},
        {VCONF_KEY_USBUI_PROGRESS, "memory/menu/support/softwareupdate/usbui_progress", 0, false,
         VConfWriter::SYSTEM_CONTROL},
        {MONOPOLY_MODE_INFO_VCONF_KEY, "memory/menu/support/softwareupdate/is_dax_in_monopoly_mode", false, false,
         VConfWriter::SYSTEM_CONTROL},
        {VCONF_KEY_MSD_VERSIONS, "memory/menu/support/softwareupdate/msd_versions", std::string(), true,
         VConfWriter::SYSTEM_INFO},
        {VCONF_KEY_MSD_PATH, "memory/menu/support/softwareupdate/msd_path", std::string(), true,
         VConfWriter::SYSTEM_INFO},
        {OOBE_ACCEPTED_UPGRADE_INFO_DATA_ID_VCONF_KEY,
         "memory/menu/support/softwareupdate/oobe_accepted_update_info_data_id", std::string(), true,
         VConfWriter::SYSTEM_CONTROL},
        {VCONF_KEY_EXTERNAL_LOCK_ACQUIRED, "memory/menu/support/softwareupdate/isExternalLockAcquired", 0, false,
         VConfWriter::SERVICE_LOGIC},
        {VCONF_KEY_INSTALLATION_LOCK_RELEASED, "memory/menu/support/softwareupdate/isInstallationLockReleased", 0,
         false, VConfWriter::SERVICE_LOGIC},
        {VCONF_KEY_CURRENT_CLIENT_PRIORITY, "memory/menu/support/softwareupdate/currentServiceClientPriority", 0, false,
         VConfWriter::SERVICE_LOGIC},
    };
}

template <class T>
void expectAgreed(const VConfKey<T>& key, const Agreement& agreed) {
    EXPECT_EQ(std::string(key.name), agreed.name);
    EXPECT_EQ(key.writer, agreed.writer);
    EXPECT_TRUE(std::holds_alternative<T>(agreed.defaultValue)) << "the type of the value";
}

template <class T>
void expectAgreedDefault(const VConfKey<T>& /*key*/, const Agreement& agreed) {
    EXPECT_FALSE(agreed.hasDefault);
}

template <class T>
void expectAgreedDefault(const VConfKeyWithDefault<T>& key, const Agreement& agreed) {
    EXPECT_TRUE(agreed.hasDefault);
    EXPECT_EQ(FakeKovan::Value(T(key.defaultValue)), agreed.defaultValue);
}

// Other programs read and write these keys.
TEST(VConfKeysTest, HaveTheTextTheTypeTheDefaultAndTheWriterThatAreAgreed) {
    for (const Agreement& agreed : agreements()) {
        SCOPED_TRACE(agreed.name);
        const auto compare = [&agreed](const auto& key) {
            expectAgreed(key, agreed);
            expectAgreedDefault(key, agreed);
        };
        std::visit(compare, agreed.key);
    }
}

// The texts of the keys in a source file: quoted, and with a name behind the prefix.
std::multiset<std::string> keysIn(const std::filesystem::path& file) {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    const std::string source = text.str();
    std::multiset<std::string> keys;
    for (const char* const start : {"\"db/", "\"memory/", "\"rtc/"}) {
        const std::string prefix = start;
        for (auto at = source.find(prefix); at != std::string::npos; at = source.find(prefix, at + 1)) {
            const auto name = at + prefix.size();
            if (name < source.size() && std::isalpha(static_cast<unsigned char>(source[name])) != 0) {
                keys.insert(source.substr(at + 1, source.find('"', name) - at - 1));
            }
        }
    }
    return keys;
}

TEST(VConfKeysTest, AreAllInTheTable) {
    std::multiset<std::string> agreed;
    for (const Agreement& agreement : agreements()) {
        agreed.insert(agreement.name);
    }
    EXPECT_EQ(agreed.size(), 35u);
    EXPECT_EQ(keysIn(std::string(SOURCE_FOLDER) + "/src/Platform/SystemAPI/VconfSystemAPI/VConfKeys.h"), agreed);
}

TEST(VConfKeysTest, StandInNoOtherFile) {
    int files = 0;
    for (const char* const folder : {"/src", "/platform", "/clients", "/simulators"}) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(SOURCE_FOLDER + std::string(folder))) {
            if (entry.is_regular_file() && entry.path().filename() != "VConfKeys.h") {
                ++files;
                EXPECT_THAT(keysIn(entry.path()), IsEmpty()) << entry.path();
            }
        }
    }
    EXPECT_GT(files, 0);
}

TEST(VConfKeysTest, AreReadWithTheirDefault) {
    EXPECT_EQ(readOrDefault(VCONF_KEY_RETAIL_MODE), 0);
    EXPECT_EQ(readOrDefault(VCONF_KEY_OTN_URL), "");
    EXPECT_THAT(
        FakeKovan::journal(),
        ElementsAre(
            "log WRN vconf_get failed while trying to access key: db/menu/support/use_mode, return default value",
            "log WRN vconf_get failed while trying to access key: rtc/db/comss/gpmurl/otn, return default value"));

    FakeKovan::setSetting(VCONF_KEY_RETAIL_MODE.name, 1);
    EXPECT_EQ(readOrDefault(VCONF_KEY_RETAIL_MODE), 1);
}

static_assert(std::is_constructible_v<VConfT<int>, VConfKey<int>>);
static_assert(!std::is_constructible_v<VConfT<bool>, VConfKey<int>>, "a key is read and written as its own type");
static_assert(!std::is_constructible_v<VConfT<int>, VConfKey<std::string>>);

template <class Key, class = void>
constexpr bool isReadWithDefault = false;
template <class Key>
constexpr bool isReadWithDefault<Key, std::void_t<decltype(readOrDefault(std::declval<Key>()))>> = true;

static_assert(isReadWithDefault<decltype(VCONF_KEY_RETAIL_MODE)>);
static_assert(isReadWithDefault<decltype(VCONF_KEY_OTN_URL)>);
static_assert(!isReadWithDefault<decltype(VCONF_KEY_TERMS_ACCEPTED)>,
              "a key without a default cannot be read with one");
static_assert(!isReadWithDefault<decltype(VCONF_KEY_DUID)>);

} // namespace
