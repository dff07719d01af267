#pragma once

#include <glib.h>
#include <memory>

namespace KovanHost {

struct GLibFree {
    void operator()(GKeyFile* file) const { g_key_file_free(file); }
    void operator()(GError* error) const { g_error_free(error); }
    void operator()(gchar* text) const { g_free(text); }
    void operator()(gchar** texts) const { g_strfreev(texts); }
};

// What GLib handed over.
template <typename T>
using GLibOwner = std::unique_ptr<T, GLibFree>;

} // namespace KovanHost
