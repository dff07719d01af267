#include <stdexcept>

#include <system_info.h>

#include "Platform/SystemAPI/SystemInfoSystemAPI/Implementation/CSystemInfo.h"
#include "Utility/Utils/CText.h"
#include "Utility/Utils/DAXAssert.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX {
namespace Platform {
namespace {

using Common::Utils::CText;
using Common::Utils::errinfo_description;
using Common::Utils::GenericException;

void checkSystemInfoError(int result) {
    switch (result) {
    case SYSTEM_INFO_ERROR_NONE:
        return;
    case SYSTEM_INFO_ERROR_INVALID_PARAMETER:
        DAX_THROW(GenericException(),
                  errinfo_description("Error during getting system-info value: SYSTEM_INFO_ERROR_INVALID_PARAMETER"));
    case SYSTEM_INFO_ERROR_IO_ERROR:
        DAX_THROW(GenericException(),
                  errinfo_description("Error during getting system-info value: SYSTEM_INFO_ERROR_IO_ERROR"));
    default:
        DAX_THROW(GenericException(), "Error during getting system-info value: unrecognized error value: " << result);
    }
}

template <class Value, class Key>
Value read(int (*function)(Key, Value*), Key key) {
    Value value{};
    checkSystemInfoError(function(key, &value));
    return value;
}

system_info_key_e numbered(int key) {
    return static_cast<system_info_key_e>(key);
}

} // namespace

int CSystemInfo::m_getSystemInfoInt(int key) {
    return read(system_info_get_value_int, numbered(key));
}

bool CSystemInfo::m_getSystemInfoBool(int key) {
    return read(system_info_get_value_bool, numbered(key));
}

std::string CSystemInfo::m_getSystemInfoString(int key) {
    const CText text(read(system_info_get_value_string, numbered(key)));
    const char* const chValue = text.get();
    BOOST_ASSERT(chValue != nullptr);
    return chValue;
}

bool CSystemInfo::m_getSystemInfoCustomBool(const char* key) {
    return read(system_info_get_custom_bool, key);
}

int CSystemInfo::m_getSystemInfoCustomInt(const char* key) {
    return read(system_info_get_custom_int, key);
}

std::string CSystemInfo::m_getSystemInfoCustomString(const char* key) {
    const CText text(read(system_info_get_custom_string, key));
    if (!text) {
        throw std::logic_error("The platform gave no text");
    }
    return text.get();
}

} // namespace Platform
} // namespace DAX
