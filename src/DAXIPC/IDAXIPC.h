#pragma once

namespace DAX::DAXIPC {

// The preparation of the process for the bus.
class IDAXIPC {
public:
    // Prepares the bus library for several threads. Call it once per process, before any adapter or proxy exists;
    // calling it again does no harm.
    static void initialize();
};

} // namespace DAX::DAXIPC
