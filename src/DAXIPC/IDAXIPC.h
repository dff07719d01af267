#pragma once

namespace DAX::DAXIPC {

// The process's way to the bus as a whole: what has to be done before any of it is used.
class IDAXIPC {
public:
    // Makes the bus library fit for several threads. Once per process, before any adapter or proxy exists; once more
    // does no harm.
    static void initialize();
};

} // namespace DAX::DAXIPC
