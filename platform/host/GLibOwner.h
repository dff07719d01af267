#pragma once

#include <memory>

#include <glib.h>

namespace KovanHost {

// How GLib's objects are released.
struct GLibFree {
    void operator()(GKeyFile* file) const { g_key_file_free(file); }
    void operator()(GError* error) const { g_error_free(error); }
    void operator()(gchar* text) const { g_free(text); }
    void operator()(gchar** texts) const { g_strfreev(texts); }
};

// Owns an object that GLib has handed over.
template <class T>
using GLibOwner = std::unique_ptr<T, GLibFree>;

} // namespace KovanHost
