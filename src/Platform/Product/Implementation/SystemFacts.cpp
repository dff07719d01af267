#include "Platform/Product/Implementation/SystemFacts.h"

#include "Utility/Utils/CText.h"

namespace DAX::Platform::SystemFacts {
namespace {

// A text of the platform's, which is freed with its copy made. One that is missing in spite of a success was not read.
int copied(int result, char* text, std::string& value) {
    const Common::Utils::CText owned(text);
    if (result == 0 && text == nullptr) {
        return SYSTEM_INFO_ERROR_IO_ERROR;
    }
    if (result == 0) {
        value = text;
    }
    return result;
}

} // namespace

const char* textOf(bool value) {
    return value ? "true" : "false";
}

int read(system_info_key_e key, std::string& value) {
    char* text = nullptr;
    const int result = system_info_get_value_string(key, &text);
    return copied(result, text, value);
}

int read(const char* key, std::string& value) {
    char* text = nullptr;
    const int result = system_info_get_custom_string(key, &text);
    return copied(result, text, value);
}

int read(const char* key, bool& value) {
    return system_info_get_custom_bool(key, &value);
}

int read(const char* key, int& value) {
    return system_info_get_custom_int(key, &value);
}

} // namespace DAX::Platform::SystemFacts
