#include "PowerMonitor.h"

#include "PowerFile.h"

#include <filesystem>
#include <gio/gio.h>
#include <stdexcept>

namespace KovanHost {

namespace {

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};

gboolean callListener(gpointer listener) {
    reinterpret_cast<void (*)()>(listener)();
    return G_SOURCE_REMOVE;
}

void onChanged(GFileMonitor*, GFile*, GFile*, GFileMonitorEvent, gpointer listener) {
    g_main_context_invoke(nullptr, callListener, listener);
}

// The local file system, without the modules that GLib has for others.
GFileMonitor* watchFolder(const std::string& path) {
    const std::unique_ptr<GFile, Unref> folder(g_vfs_get_file_for_path(g_vfs_get_local(), path.c_str()));
    GError* error = nullptr;
    GFileMonitor* const monitor = g_file_monitor_directory(folder.get(), G_FILE_MONITOR_NONE, nullptr, &error);
    if (monitor == nullptr) {
        const std::string reason = error->message;
        g_error_free(error);
        throw std::runtime_error(path + ": " + reason);
    }
    return monitor;
}

} // namespace

PowerMonitor::PowerMonitor(void (*listener)()) {
    const std::filesystem::path folder = std::filesystem::path(powerPath()).parent_path();
    std::filesystem::create_directories(folder);
    m_monitor.reset(watchFolder(folder));
    g_signal_connect(m_monitor.get(), "changed", G_CALLBACK(onChanged), reinterpret_cast<gpointer>(listener));
}

void PowerMonitor::Stop::operator()(GFileMonitor* monitor) const {
    g_file_monitor_cancel(monitor);
    g_object_unref(monitor);
}

} // namespace KovanHost
