#pragma once

#include <chrono>

#include <glib.h>

namespace DAX::Tests {

// Iterates GLib's default main context until `condition` holds. False when that takes longer than the bound.
template <class Condition>
bool iterateUntil(Condition condition, std::chrono::milliseconds bound = std::chrono::seconds(20)) {
    bool expired = false;
    const auto expire = [](gpointer flag) -> gboolean {
        *static_cast<bool*>(flag) = true;
        return G_SOURCE_CONTINUE;
    };
    const guint timer = g_timeout_add(static_cast<guint>(bound.count()), expire, &expired);
    while (!condition() && !expired) {
        g_main_context_iteration(nullptr, TRUE);
    }
    g_source_remove(timer);
    return condition();
}

} // namespace DAX::Tests
