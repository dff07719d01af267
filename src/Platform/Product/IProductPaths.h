#pragma once

#include <boost/filesystem/path.hpp>

namespace DAX {
namespace Platform {

// Where the update stack's files are. Only computes names: nothing is created or looked at. Any thread may ask.
class IProductPaths {
public:
    // The persistent data directory.
    static boost::filesystem::path getDAXPartitionPath();

    // The date of the last search for an upgrade.
    static boost::filesystem::path getLastSearchingDateFilePath();

    // The installation lock: it is taken exactly while this file exists.
    static boost::filesystem::path getInstallationLockPath();
};

} // namespace Platform
} // namespace DAX
