#include "Platform/SystemAPI/FactorySystemAPI/Implementation/FactoryItems.h"

#include <map>
#include <string>

#include "Common/Logging/LoggingStream.h"
#include "Utility/Utils/DAXAssert.h"

namespace DAX::Platform {
namespace {

struct FactoryItem {
    std::string name;
    int defaultValue;
};

const std::map<system_info_key_e, FactoryItem> defaultValuesMap = {
    {SYSTEM_INFO_KEY_OTN_SERVER_TYPE, {"ID_OTN_INFO_LINK_SERVER_TYPE", 1}},
    {SYSTEM_INFO_KEY_OTN_ONOFF, {"ID_OTN_ONOFF", 1}},
    {SYSTEM_INFO_KEY_HOTEL_OTN_UPDATE, {"ID_HOTEL_OTN_UPDATE", 1}},
    {SYSTEM_INFO_KEY_OTN_TESTSERVER, {"ID_OTN_TESTSERVER", 0}},
    {SYSTEM_INFO_KEY_DAX_FAIL_TEST, {"ID_DAX_FAIL_TEST", 0}},
    {SYSTEM_INFO_KEY_DAX_DURATION, {"ID_DAX_DURATION", 0}},
    {SYSTEM_INFO_KEY_FAST_USB_BOOTING, {"ID_FAST_USB_BOOTING_ONOFF", 0}}};

} // namespace

int getIntFromFactory(system_info_key_e key) {
    const auto it = defaultValuesMap.find(key);
    BOOST_ASSERT(it != defaultValuesMap.end());
    const FactoryItem& item = it->second;
    int value = 0;
    if (system_info_get_value_int(key, &value) == 0) {
        DAX_LOG(VERBOSE) << "Factory Settings value under key " << key << " (" << item.name << ") is : " << value;
        return value;
    }
    DAX_LOG(INF) << "Failed to fetch key " << key << " (" << item.name
                 << ") from factory menu. Default value will be used: " << item.defaultValue;
    return item.defaultValue;
}

} // namespace DAX::Platform
