#pragma once

#include <stdbool.h>

// Facts about the device: numbered values, and custom ones under a text key. Any thread may call.
// Every function returns 0 for success; otherwise it leaves the value as it was. A text belongs to the caller, who
// frees it with free().

#ifdef __cplusplus
extern "C" {
#endif

enum {
    SYSTEM_INFO_ERROR_NONE = 0,
    SYSTEM_INFO_ERROR_IO_ERROR = -5,           // the value cannot be read
    SYSTEM_INFO_ERROR_INVALID_PARAMETER = -22, // there is no such value, or it is of another type
};

// clang-format off
#ifdef __cplusplus
typedef enum system_info_key_e : int { // the platform has many more
#else
typedef enum system_info_key_e {
#endif
    SYSTEM_INFO_KEY_MODEL_LINE = 0,
    SYSTEM_INFO_KEY_SOFTWARE_DATE = 8,
    SYSTEM_INFO_KEY_LOCALSET = 90,
    SYSTEM_INFO_KEY_OTN_SERVER_TYPE = 126,
    SYSTEM_INFO_KEY_SOFTWARE_VERSION = 128,
    SYSTEM_INFO_KEY_SUBMICOM_VERSION = 133,
    SYSTEM_INFO_KEY_SALES_REGION = 284,
    SYSTEM_INFO_KEY_PLATFORM_TYPE = 564,
    SYSTEM_INFO_KEY_CHINA_MODEL_LINE = 620,
    SYSTEM_INFO_KEY_FAST_USB_BOOTING = 869,
    SYSTEM_INFO_KEY_OTA_SUPPORT = 890,
    SYSTEM_INFO_KEY_OTN_ONOFF = 902,
    SYSTEM_INFO_KEY_OTN_TESTSERVER = 904,
    SYSTEM_INFO_KEY_DAX_DURATION = 922,
    SYSTEM_INFO_KEY_DAX_FAIL_TEST = 923,
    SYSTEM_INFO_KEY_HOTEL_OTN_UPDATE = 10130
} system_info_key_e;
// clang-format on

int system_info_get_value_int(system_info_key_e key, int* value);
int system_info_get_value_bool(system_info_key_e key, bool* value);
int system_info_get_value_string(system_info_key_e key, char** value);

int system_info_get_custom_int(const char* key, int* value);
int system_info_get_custom_bool(const char* key, bool* value);
int system_info_get_custom_string(const char* key, char** value);

#ifdef __cplusplus
}
#endif
