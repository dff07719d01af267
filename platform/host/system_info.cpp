#include "system_info.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "Border.h"
#include "DeviceFile.h"

// A value for which the file has a result of failure gives that result and no value. Otherwise:
//
// A value that deviceFacts() knows can always be read, since it has a default; asked for as another type, it is an
// invalid parameter. Any other value comes only from the file and has every type as which it can be read. It is an
// invalid parameter when the file does not have it, and an I/O error when it cannot be read as the type that is asked
// for.

namespace {

using KovanHost::DeviceFact;

constexpr int FAILED = SYSTEM_INFO_ERROR_IO_ERROR;

void handOver(bool from, bool* to) {
    *to = from;
}

void handOver(int from, int* to) {
    *to = from;
}

void handOver(const std::string& from, char** to) {
    char* const copy = strdup(from.c_str());
    if (copy == nullptr) {
        throw std::bad_alloc();
    }
    *to = copy;
}

template <class T>
std::optional<T> valueAs(const DeviceFact* fact, const std::string& group, const std::string& name) {
    if (fact == nullptr) {
        return KovanHost::givenValue<T>(group, name);
    }
    if (!std::holds_alternative<T>(fact->fallback)) {
        return std::nullopt;
    }
    return std::get<T>(KovanHost::valueOf(*fact));
}

template <class T, class Target>
int read(const DeviceFact* fact, const std::string& group, const std::string& name, Target* target) {
    const int result = KovanHost::resultOf(group, fact != nullptr ? fact->name : name);
    if (result != SYSTEM_INFO_ERROR_NONE) {
        return result;
    }
    const std::optional<T> value = valueAs<T>(fact, group, name);
    if (!value) {
        return static_cast<int>(SYSTEM_INFO_ERROR_INVALID_PARAMETER);
    }
    handOver(*value, target);
    return static_cast<int>(SYSTEM_INFO_ERROR_NONE);
}

template <class T, class Target>
int readValue(system_info_key_e key, Target* target) {
    if (target == nullptr) {
        return SYSTEM_INFO_ERROR_INVALID_PARAMETER;
    }
    return KovanHost::atBorder(FAILED, [=] {
        const int number = key;
        return read<T>(KovanHost::findFact(number), KovanHost::SYSTEM_INFO, std::to_string(number), target);
    });
}

template <class T, class Target>
int readCustom(const char* key, Target* target) {
    if (key == nullptr || target == nullptr) {
        return SYSTEM_INFO_ERROR_INVALID_PARAMETER;
    }
    return KovanHost::atBorder(FAILED, [=] {
        return read<T>(KovanHost::findFact(KovanHost::FEATURES, key), KovanHost::FEATURES, key, target);
    });
}

} // namespace

int system_info_get_value_int(system_info_key_e key, int* value) {
    return readValue<int>(key, value);
}

int system_info_get_value_bool(system_info_key_e key, bool* value) {
    return readValue<bool>(key, value);
}

int system_info_get_value_string(system_info_key_e key, char** value) {
    return readValue<std::string>(key, value);
}

int system_info_get_custom_int(const char* key, int* value) {
    return readCustom<int>(key, value);
}

int system_info_get_custom_bool(const char* key, bool* value) {
    return readCustom<bool>(key, value);
}

int system_info_get_custom_string(const char* key, char** value) {
    return readCustom<std::string>(key, value);
}
