#pragma once

#include <memory>

using GSource = struct _GSource;

namespace KovanHost {

// Calls a function whenever the power file may have changed, whoever changed it and however; the file, and the folder,
// need not be there before. It is told by the kernel, through a source of GLib's default main context, and calls there.
// It may call when nothing has changed, and once more while it is destroyed on another thread. Once the folder itself
// is taken away, it hears of that and of nothing more.
class PowerMonitor {
public:
    // The folder is made if it is absent. `listener` does not throw. std::system_error when it cannot be watched.
    explicit PowerMonitor(void (*listener)());

private:
    struct Stop {
        void operator()(GSource* source) const;
    };
    std::unique_ptr<GSource, Stop> m_source;
};

} // namespace KovanHost
