#include <cstdlib>
#include <cstring>

#include <system_info.h>

#include "support/FakeKovan/State.h"

namespace FakeKovan {
namespace {

// Numbered and custom values share one map, where the key of a numbered one is its number in decimal.
using Key = std::string;

void copy(const SystemInfoValue& stored, int* value) {
    *value = std::get<int>(stored);
}

void copy(const SystemInfoValue& stored, bool* value) {
    *value = std::get<bool>(stored);
}

void copy(const SystemInfoValue& stored, char** value) {
    *value = strdup(std::get<std::string>(stored).c_str());
}

template <class Stored, class Value>
int read(const Key& key, Value* value) {
    return locked([&](State::Content& content) {
        State::SystemInfo& info = content.systemInfo;
        info.reads.push_back(key);
        if (const auto failure = info.failures.find(key); failure != info.failures.end()) {
            return failure->second;
        }
        const auto found = info.values.find(key);
        if (found == info.values.end()) {
            return static_cast<int>(SYSTEM_INFO_ERROR_INVALID_PARAMETER);
        }
        if (std::holds_alternative<std::nullptr_t>(found->second)) {
            *value = Value{};
            return 0;
        }
        if (!std::holds_alternative<Stored>(found->second)) {
            return static_cast<int>(SYSTEM_INFO_ERROR_INVALID_PARAMETER);
        }
        copy(found->second, value);
        return 0;
    });
}

} // namespace

void setSystemInfo(int key, const SystemInfoValue& value) {
    setSystemInfo(std::to_string(key), value);
}

void setSystemInfo(const std::string& key, const SystemInfoValue& value) {
    locked([&](State::Content& content) { content.systemInfo.values[key] = value; });
}

void failSystemInfo(int key, int result) {
    failSystemInfo(std::to_string(key), result);
}

void failSystemInfo(const std::string& key, int result) {
    locked([&](State::Content& content) { content.systemInfo.failures[key] = result; });
}

std::vector<std::string> systemInfoReads() {
    return locked([](State::Content& content) { return content.systemInfo.reads; });
}

} // namespace FakeKovan

int system_info_get_value_int(system_info_key_e key, int* value) {
    return FakeKovan::read<int>(std::to_string(key), value);
}

int system_info_get_value_bool(system_info_key_e key, bool* value) {
    return FakeKovan::read<bool>(std::to_string(key), value);
}

int system_info_get_value_string(system_info_key_e key, char** value) {
    return FakeKovan::read<std::string>(std::to_string(key), value);
}

int system_info_get_custom_int(const char* key, int* value) {
    return FakeKovan::read<int>(key, value);
}

int system_info_get_custom_bool(const char* key, bool* value) {
    return FakeKovan::read<bool>(key, value);
}

int system_info_get_custom_string(const char* key, char** value) {
    return FakeKovan::read<std::string>(key, value);
}
