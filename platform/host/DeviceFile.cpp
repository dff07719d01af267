#include "DeviceFile.h"

#include "AppendFile.h"
#include "Root.h"

#include <glib.h>
#include <memory>
#include <unistd.h>

namespace KovanHost {

namespace {

struct Free {
    void operator()(GKeyFile* file) const { g_key_file_free(file); }
    void operator()(GError* error) const { g_error_free(error); }
    void operator()(char* text) const { g_free(text); }
};

void warn(const std::string& path, const GError& error) {
    appendLine(STDERR_FILENO, path + ": " + error.message + "; using the default");
}

bool isAbsence(const GError& error) {
    return g_error_matches(&error, G_KEY_FILE_ERROR, G_KEY_FILE_ERROR_KEY_NOT_FOUND) != FALSE ||
           g_error_matches(&error, G_KEY_FILE_ERROR, G_KEY_FILE_ERROR_GROUP_NOT_FOUND) != FALSE;
}

// What `get` reads from the file, which is loaded.
template <class Value, class Get>
Value readDevice(Value fallback, Get get) {
    const std::string path = underRoot("etc/kovan/device.ini");
    if (access(path.c_str(), F_OK) != 0) {
        return fallback;
    }
    const std::unique_ptr<GKeyFile, Free> file(g_key_file_new());
    GError* raised = nullptr;
    Value value{};
    if (g_key_file_load_from_file(file.get(), path.c_str(), G_KEY_FILE_NONE, &raised) != FALSE) {
        value = get(*file, &raised);
    }
    if (raised == nullptr) {
        return value;
    }
    const std::unique_ptr<GError, Free> error(raised);
    if (!isAbsence(*error)) {
        warn(path, *error);
    }
    return fallback;
}

} // namespace

bool deviceFlag(const char* group, const char* key, bool fallback) {
    return readDevice(fallback, [&](GKeyFile& file, GError** error) {
        return g_key_file_get_boolean(&file, group, key, error) != FALSE;
    });
}

std::string deviceText(const char* group, const char* key, const std::string& fallback) {
    return readDevice(fallback, [&](GKeyFile& file, GError** error) {
        const std::unique_ptr<char, Free> text(g_key_file_get_string(&file, group, key, error));
        return text ? std::string(text.get()) : std::string();
    });
}

} // namespace KovanHost
