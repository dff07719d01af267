#include <stdexcept>

#include <system_info.h>

#include "Platform/SystemAPI/SystemInfoSystemAPI/Implementation/CSystemInfo.h"
#include "Utility/Utils/CText.h"
#include "Utility/Utils/DAXAssert.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Platform {
namespace {

using Common::Utils::CText;
using Common::Utils::errinfo_description;
using Common::Utils::GenericException;

void checkSystemInfoError(int result, const boost::source_location& site) {
    switch (result) {
    case SYSTEM_INFO_ERROR_NONE:
        return;
    case SYSTEM_INFO_ERROR_INVALID_PARAMETER:
        DAX_THROW_AT(
            site, GenericException(),
            errinfo_description("Error during getting system-info value: SYSTEM_INFO_ERROR_INVALID_PARAMETER"));
    case SYSTEM_INFO_ERROR_IO_ERROR:
        DAX_THROW_AT(site, GenericException(),
                     errinfo_description("Error during getting system-info value: SYSTEM_INFO_ERROR_IO_ERROR"));
    default:
        DAX_THROW_AT(site, GenericException(),
                     "Error during getting system-info value: unrecognized error value: " << result);
    }
}

template <class Value, class Key>
Value read(int (*function)(Key, Value*), Key key, const boost::source_location& site) {
    Value value{};
    checkSystemInfoError(function(key, &value), site);
    return value;
}

system_info_key_e numbered(int key) {
    return static_cast<system_info_key_e>(key);
}

} // namespace

int CSystemInfo::m_getSystemInfoInt(int key) {
    return read(system_info_get_value_int, numbered(key), BOOST_CURRENT_LOCATION);
}

bool CSystemInfo::m_getSystemInfoBool(int key) {
    return read(system_info_get_value_bool, numbered(key), BOOST_CURRENT_LOCATION);
}

std::string CSystemInfo::m_getSystemInfoString(int key) {
    const CText text(read(system_info_get_value_string, numbered(key), BOOST_CURRENT_LOCATION));
    const char* const chValue = text.get();
    BOOST_ASSERT(chValue != nullptr);
    return chValue;
}

bool CSystemInfo::m_getSystemInfoCustomBool(const char* key) {
    return read(system_info_get_custom_bool, key, BOOST_CURRENT_LOCATION);
}

int CSystemInfo::m_getSystemInfoCustomInt(const char* key) {
    return read(system_info_get_custom_int, key, BOOST_CURRENT_LOCATION);
}

std::string CSystemInfo::m_getSystemInfoCustomString(const char* key) {
    const CText text(read(system_info_get_custom_string, key, BOOST_CURRENT_LOCATION));
    if (!text) { // not DAX_THROW: callers know the exception that std::string used to throw for null
        throw std::logic_error("The platform gave no text");
    }
    return text.get();
}

} // namespace DAX::Platform
