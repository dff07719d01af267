#pragma once

namespace DAX {
namespace Platform {

// What the device is asked to do, and in what mode it is. Any thread may call.
class ISystemControl {
public:
    // Which build this is, for the log.
    static const char* DAXRevisionDescription();

    // Whether updates may use the cellular network; false when the setting cannot be read.
    static bool isCellularConnectionAllowed();

    // Whether an upgrade succeeded since the last factory reset; false when the setting cannot be read.
    static bool wasAnySuccessfulUpgrade();
};

} // namespace Platform
} // namespace DAX
