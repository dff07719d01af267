#pragma once

namespace DAX {
namespace Platform {

// What this device is, and the small states that it keeps in files. Nothing is cached: every call looks afresh. Any
// thread may ask.
class IProductInfo {
public:
    // True exactly while the installation lock file exists.
    static bool isInstallationLocked();
};

} // namespace Platform
} // namespace DAX
