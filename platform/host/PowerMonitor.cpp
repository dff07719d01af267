#include "PowerMonitor.h"

#include <array>
#include <cerrno>
#include <filesystem>
#include <mutex>
#include <system_error>

#include <glib-unix.h>
#include <sys/inotify.h>
#include <unistd.h>

#include "OwnFiles.h"
#include "PowerFile.h"

namespace KovanHost {

namespace {

// The file may be written in place, or another one may take its name.
constexpr std::uint32_t CHANGES = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_ATTRIB;

// Guards the descriptors of all watches between threads: GLib hands a source from one thread to another under locks of
// its own, which others cannot see.
std::mutex descriptorMutex;

// Owned by the source, so that it lives until the last call has returned.
struct Watch {
    Watch(int watchedDescriptor, void (*changeListener)()) : descriptor(watchedDescriptor), listener(changeListener) {}
    int descriptor;
    void (*listener)();

    ~Watch() {
        const std::lock_guard<std::mutex> lock(descriptorMutex);
        close(descriptor);
    }
};

std::unique_ptr<Watch> watchFolder(const std::string& path, void (*listener)()) {
    std::unique_lock<std::mutex> lock(descriptorMutex);
    const int descriptor = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), path);
    }
    const bool watched = inotify_add_watch(descriptor, path.c_str(), CHANGES | IN_ONLYDIR) >= 0;
    const int failure = errno;
    auto watch = std::make_unique<Watch>(descriptor, listener);
    lock.unlock();
    if (!watched) {
        errno = failure;
        throw std::system_error(errno, std::generic_category(), path);
    }
    return watch;
}

// Reads the events only to clear them: the file itself shows what has happened.
gboolean onChanged(gint descriptor, GIOCondition, gpointer data) {
    void (*listener)() = nullptr;
    {
        const std::lock_guard<std::mutex> lock(descriptorMutex);
        std::array<char, 4096> events;
        while (read(descriptor, events.data(), events.size()) > 0) {
        }
        listener = static_cast<Watch*>(data)->listener;
    }
    listener();
    return G_SOURCE_CONTINUE;
}

void release(gpointer data) {
    const std::unique_ptr<Watch> watch(static_cast<Watch*>(data));
}

} // namespace

PowerMonitor::PowerMonitor(void (*listener)()) {
    const std::filesystem::path folder = std::filesystem::path(powerPath()).parent_path();
    if (const int error = makeFolders(folder)) {
        throw std::system_error(error, std::generic_category(), folder);
    }
    std::unique_ptr<Watch> watch = watchFolder(folder, listener);
    m_source.reset(g_unix_fd_source_new(watch->descriptor, G_IO_IN));
    g_source_set_callback(m_source.get(), reinterpret_cast<GSourceFunc>(reinterpret_cast<void (*)()>(onChanged)),
                          watch.release(), release);
    g_source_attach(m_source.get(), nullptr);
}

void PowerMonitor::Stop::operator()(GSource* source) const {
    g_source_destroy(source);
    g_source_unref(source);
}

} // namespace KovanHost
