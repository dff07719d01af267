#pragma once

#include <string>

#include <vconf.h>

#include "Utility/Utils/CText.h"

namespace DAX::Platform {

// The store's functions in terms of bool and std::string, types that it does not know. All return the store's result, 0
// for success.

// Sets `*value` whatever the result: to false when the read fails.
inline int vconf_get_bool_wrapper(const char* key, bool* value) {
    int stored = 0;
    const int result = vconf_get_bool(key, &stored);
    *value = stored != 0;
    return result;
}

inline int vconf_set_bool_wrapper(const char* key, bool value) {
    return vconf_set_bool(key, value ? 1 : 0);
}

// -1 when there is no text; `*value` is then left as it was.
inline int vconf_get_string_wrapper(const char* key, std::string* value) {
    const Common::Utils::CText text(vconf_get_str(key));
    if (!text) {
        return -1;
    }
    *value = text.get();
    return 0;
}

// By value, as the table of the operations of each type has them.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
inline int vconf_set_string_wrapper(const char* key, std::string value) {
    return vconf_set_str(key, value.c_str());
}

} // namespace DAX::Platform
