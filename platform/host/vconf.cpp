#include "vconf.h"

#include <cstring>

#include "Border.h"
#include "Settings.h"

namespace {

using KovanHost::SettingsValue;

constexpr int FAILED = -1;

template <class T, class Out>
int get(const char* key, Out* value) {
    return KovanHost::atBorder(FAILED, [&] {
        SettingsValue stored;
        if (key == nullptr || value == nullptr) {
            return FAILED;
        }
        if (const int error = KovanHost::getSetting(key, stored)) {
            return error;
        }
        if (!std::holds_alternative<T>(stored)) {
            return FAILED;
        }
        *value = std::get<T>(stored);
        return 0;
    });
}

template <class T, class In>
int set(const char* key, const In& value) {
    return KovanHost::atBorder(
        FAILED, [&] { return key == nullptr ? FAILED : KovanHost::setSetting(key, SettingsValue(T(value))); });
}

} // namespace

int vconf_get_bool(const char* key, int* value) {
    return get<bool>(key, value);
}

int vconf_get_int(const char* key, int* value) {
    return get<int>(key, value);
}

int vconf_get_dbl(const char* key, double* value) {
    return get<double>(key, value);
}

char* vconf_get_str(const char* key) {
    std::string value;
    return get<std::string>(key, &value) == 0 ? strdup(value.c_str()) : nullptr;
}

int vconf_set_bool(const char* key, int value) {
    return set<bool>(key, value != 0);
}

int vconf_set_int(const char* key, int value) {
    return set<int>(key, value);
}

int vconf_set_dbl(const char* key, double value) {
    return set<double>(key, value);
}

int vconf_set_str(const char* key, const char* value) {
    return value == nullptr ? FAILED : set<std::string>(key, value);
}
