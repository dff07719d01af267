#include "SlowStart.h"

#include <atomic>
#include <string>
#include <utility>

#include <glib.h>

#include "support/FakeKovan.h"

namespace {

std::atomic<bool> slow{false};
std::atomic<int> looksLeft{0};
std::function<void()> beforeStart;

} // namespace

SlowStart::SlowStart(int looks) {
    looksLeft = looks;
    slow = true;
}

SlowStart::~SlowStart() {
    slow = false;
}

void beforeTheNextStart(std::function<void()> action) {
    beforeStart = std::move(action);
}

extern "C" guint __real_g_idle_add_full(gint priority, GSourceFunc function, gpointer data, GDestroyNotify notify);
extern "C" guint __wrap_g_idle_add_full(gint priority, GSourceFunc function, gpointer data, GDestroyNotify notify);
extern "C" gboolean __real_g_main_loop_is_running(GMainLoop* loop);
extern "C" gboolean __wrap_g_main_loop_is_running(GMainLoop* loop);
extern "C" void __real_g_usleep(gulong microseconds);
extern "C" void __wrap_g_usleep(gulong microseconds);

guint __wrap_g_idle_add_full(gint priority, GSourceFunc function, gpointer data, GDestroyNotify notify) {
    if (beforeStart) {
        std::exchange(beforeStart, nullptr)();
    }
    return __real_g_idle_add_full(priority, function, data, notify);
}

gboolean __wrap_g_main_loop_is_running(GMainLoop* loop) {
    if (slow) {
        FakeKovan::note("look");
        if (looksLeft-- > 0) {
            return FALSE;
        }
    }
    return __real_g_main_loop_is_running(loop);
}

void __wrap_g_usleep(gulong microseconds) {
    if (slow) {
        FakeKovan::note("pause " + std::to_string(microseconds));
        return;
    }
    __real_g_usleep(microseconds);
}
