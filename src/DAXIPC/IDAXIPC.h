#pragma once

namespace DAX {
namespace DAXIPC {

class IDAXIPC {
public:
    // Once per process, before any adapter or proxy exists.
    static void initialize();
};

} // namespace DAXIPC
} // namespace DAX
