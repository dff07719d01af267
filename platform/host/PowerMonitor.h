#pragma once

#include <memory>

using GSource = struct _GSource; // NOLINT(bugprone-reserved-identifier): the library's own name

namespace KovanHost {

// Calls a function whenever the power file may have changed, whoever changed it and in whatever way; neither the file
// nor its folder need exist before. The kernel notifies it through a source of GLib's default main context, where it
// makes its calls. It may call when nothing has changed, and once more while it is being destroyed on another thread.
// When the folder itself is removed, it is notified of that and of nothing later.
class PowerMonitor {
public:
    // Makes the folder if it does not exist. `listener` must not throw. Throws std::system_error when the folder cannot
    // be watched.
    explicit PowerMonitor(void (*listener)());

private:
    struct Stop {
        void operator()(GSource* source) const;
    };
    std::unique_ptr<GSource, Stop> m_source;
};

} // namespace KovanHost
