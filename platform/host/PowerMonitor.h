#pragma once

#include <memory>

using GFileMonitor = struct _GFileMonitor;

namespace KovanHost {

// Calls a function whenever the power file may have changed, whoever changed it and however; the file, and the folder,
// need not be there before. It is told by the kernel, through GLib, and calls on GLib's default main context. It may
// call when nothing has changed, and once more while it is destroyed on another thread.
class PowerMonitor {
public:
    // The folder is made if it is absent. `listener` does not throw. std::runtime_error when it cannot be watched.
    explicit PowerMonitor(void (*listener)());

private:
    struct Stop {
        void operator()(GFileMonitor* monitor) const;
    };
    std::unique_ptr<GFileMonitor, Stop> m_monitor;
};

} // namespace KovanHost
