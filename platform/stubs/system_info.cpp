#include "system_info.h"

#include <cstring>

#include "Call.h"

namespace {

const int NO_SUCH_VALUE = SYSTEM_INFO_ERROR_INVALID_PARAMETER;

template <class Value>
int fact(const char* function, Value* value) {
    return KovanStubs::answer(function, value, Value(), SYSTEM_INFO_ERROR_NONE, NO_SUCH_VALUE);
}

int text(const char* function, char** value) {
    if (!KovanStubs::works(function)) {
        return NO_SUCH_VALUE;
    }
    *value = strdup("");
    return SYSTEM_INFO_ERROR_NONE;
}

} // namespace

int system_info_get_value_int(system_info_key_e, int* value) {
    return fact(__func__, value);
}

int system_info_get_value_bool(system_info_key_e, bool* value) {
    return fact(__func__, value);
}

int system_info_get_value_string(system_info_key_e, char** value) {
    return text(__func__, value);
}

int system_info_get_custom_int(const char*, int* value) {
    return fact(__func__, value);
}

int system_info_get_custom_bool(const char*, bool* value) {
    return fact(__func__, value);
}

int system_info_get_custom_string(const char*, char** value) {
    return text(__func__, value);
}
