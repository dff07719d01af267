#include "DeviceFacts.h"

#include <algorithm>
#include <memory>

#include <system_info.h>

#include "KeyFile.h"

namespace KovanHost {

namespace {

using Facts = std::vector<DeviceFact>;
using namespace std::string_literals;

const std::string FEATURE = "com.velmora/featureconf/";

// clang-format off
Facts makeFacts() {
    return {
        {SOFTWARE, "production", false, "Production software has no debug parameters and no guards that watch the loop"},

        {DIRECTORIES, "apps", "/usr/apps"s, "Read-only applications"},
        {DIRECTORIES, "big_temporary_storage", "/mnt/temporary"s, "Room for what is downloaded"},
        {DIRECTORIES, "binaries", "/usr/bin"s, "Programs of the system"},
        {DIRECTORIES, "reserved", "/usr/lib"s, "In no use"},
        {DIRECTORIES, "shared_data", "/usr/share"s, "Data of the system, such as translations"},
        {DIRECTORIES, "usb_mount", "/mnt/usb"s, "Where USB sticks are mounted"},

        {SYSTEM_INFO, "model_line", "EUR_DTV"s, "The line of models; with CHI_DTV, china_model_line holds", SYSTEM_INFO_KEY_MODEL_LINE},
        {SYSTEM_INFO, "software_date", "2026-03-02"s, "When the software was built", SYSTEM_INFO_KEY_SOFTWARE_DATE},
        {SYSTEM_INFO, "localset", "EU"s, "The local set", SYSTEM_INFO_KEY_LOCALSET},
        {SYSTEM_INFO, "otn_server_type", 1, "Updates over the network: 0 from the other server, 1 from the usual one", SYSTEM_INFO_KEY_OTN_SERVER_TYPE},
        {SYSTEM_INFO, "software_version", "T-MARLOW-1666.1"s, "The model, a dash, and the version as MAJOR.MINOR", SYSTEM_INFO_KEY_SOFTWARE_VERSION},
        {SYSTEM_INFO, "submicom_version", "SUB-1004"s, "The version of the standby controller", SYSTEM_INFO_KEY_SUBMICOM_VERSION},
        {SYSTEM_INFO, "sales_region", 1, "Where it is sold; 24 is the Chinese mainland", SYSTEM_INFO_KEY_SALES_REGION},
        {SYSTEM_INFO, "platform_type", "MARLOW"s, "The platform", SYSTEM_INFO_KEY_PLATFORM_TYPE},
        {SYSTEM_INFO, "china_model_line", "CHI_MARLOW"s, "The line of models in China", SYSTEM_INFO_KEY_CHINA_MODEL_LINE},
        {SYSTEM_INFO, "fast_usb_booting", 0, "Factory menu: not 0 for a fast start in production", SYSTEM_INFO_KEY_FAST_USB_BOOTING},
        {SYSTEM_INFO, "ota_support", 1, "Factory menu: 1 when updates over the air are supported", SYSTEM_INFO_KEY_OTA_SUPPORT},
        {SYSTEM_INFO, "otn_onoff", 1, "Factory menu: 0 switches updates over the network off", SYSTEM_INFO_KEY_OTN_ONOFF},
        {SYSTEM_INFO, "otn_testserver", 0, "Factory menu: the zone, 1 to 26 for A to Z, but 20, the T; 0 for none", SYSTEM_INFO_KEY_OTN_TESTSERVER},
        {SYSTEM_INFO, "dax_duration", 0, "Factory menu: not 0 for short time-outs of updates over the air", SYSTEM_INFO_KEY_DAX_DURATION},
        {SYSTEM_INFO, "dax_fail_test", 0, "Factory menu: not 0 for the test of failures", SYSTEM_INFO_KEY_DAX_FAIL_TEST},
        {SYSTEM_INFO, "hotel_otn_update", 1, "Factory menu: 0 switches updates over the network off in hotels", SYSTEM_INFO_KEY_HOTEL_OTN_UPDATE},

        {FEATURES, FEATURE + "panel_resolution_height", 2160, "The height of the panel in pixels; 540 is a stretched one"},
        {FEATURES, FEATURE + "pictor_portrait_mode_support", false, "The picture can stand upright"},
        {FEATURES, FEATURE + "display_rotator_supported", false, "A motor can turn the display"},
        {FEATURES, FEATURE + "lfd_sbb_type", "NONE"s, "SBOX for a box that drives a large display"},
        {FEATURES, FEATURE + "power.battery_framework_support", false, "It can run from a battery"},
        {FEATURES, FEATURE + "product.partition_file", "/etc/partition.txt"s, "The file that describes the partitions"},
        {FEATURES, FEATURE + "product.chipset", "MARLOW1"s, "The chipset"},
        {FEATURES, FEATURE + "kovan_enterprise_platform.support", false, "A model for enterprises"},
        {FEATURES, FEATURE + "iwb_support", false, "An interactive whiteboard"},
        {FEATURES, FEATURE + "product.product_type", 0, "0 TV, 1 monitor, 2, 6 and 7 AV, 3 projector, 4 LFD, 5 SMD, 8 HTV, 9 speaker"},
        {FEATURES, FEATURE + "product.b2b_option_support", false, "A model for businesses, such as hotels"},

        {PLANTCFG, "model", 1, "The number of the model"},
        {PLANTCFG, "localset", 1, "The number of the local set"},
    };
}
// clang-format on

std::string written(const FactValue& value) {
    if (const bool* const flag = std::get_if<bool>(&value)) {
        return *flag ? "true" : "false";
    }
    const int* const number = std::get_if<int>(&value);
    return number != nullptr ? std::to_string(*number) : std::get<std::string>(value);
}

template <class Condition>
const DeviceFact* findWhere(Condition condition) {
    const Facts& facts = deviceFacts();
    const auto found = std::find_if(facts.begin(), facts.end(), condition);
    return found != facts.end() ? &*found : nullptr;
}

} // namespace

const Facts& deviceFacts() {
    static const Facts& facts = *std::make_unique<Facts>(makeFacts()).release(); // outlives static destructors
    return facts;
}

const DeviceFact* findFact(const std::string& group, const std::string& name) {
    return findWhere([&](const DeviceFact& fact) { return fact.group == group && fact.name == name; });
}

const DeviceFact* findFact(int number) {
    return findWhere([=](const DeviceFact& fact) { return fact.number == number && fact.group == SYSTEM_INFO; });
}

DeviceFact resultFact(const std::string& group, const std::string& name) {
    return {RESULTS, group + "/" + name, group == PLANTCFG ? 1 : 0, "What the question for the fact results in"};
}

std::string defaultDeviceText() {
    std::string text =
        "# The facts of the simulated device. A change is seen at once by what asks for it next, but for\n"
        "# [software] and [directories], which a program asks for once. What is not here has its default.\n";
    std::string group;
    for (const DeviceFact& fact : deviceFacts()) {
        if (fact.group != group) {
            group = fact.group;
            text += "\n" + groupLine(group);
        }
        text += "# " + fact.meaning + "\n" + keyLine(fact.name, written(fact.fallback));
    }
    return text + "\n" + groupLine(RESULTS) +
           "# What the question for a fact results in, instead of success: makes it fail. For instance:\n"
           "# system_info/otn_onoff=-5\n"
           "# plantcfg/model=-1\n";
}

} // namespace KovanHost
