#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/ModifiedPartitionsMarkers.h"

#include <algorithm>
#include <vector>

#include <boost/exception/diagnostic_information.hpp>
#include <boost/filesystem/operations.hpp>

#include "Common/IO/FlagFile.h"
#include "Common/Logging/LoggingStream.h"
#include "Platform/Product/IProductPaths.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX {
namespace Platform {
namespace ModifiedPartitionsMarkers {
namespace {

using boost::filesystem::path;

// By slot.
std::vector<path> getModifiedPartitionsMarkerPaths() {
    static const char NAME[] = "ModifiedPartitionsMarker";
    static const std::vector<path> paths = {IProductPaths::getDAXPartitionPath() / NAME,
                                            IProductPaths::getDAXBigTempPath() / NAME};
    return paths;
}

bool setIn(const path& marker, std::size_t slot) {
    try {
        Common::IO::writeFlagFile(marker);
        return true;
    } catch (...) {
        DAX_LOG(FTL) << "Exception caught while trying to setModifiedPartitionsMarker slot " << slot << ": "
                     << boost::current_exception_diagnostic_information(true);
        return false;
    }
}

} // namespace

void set() {
    const std::vector<path> markers = getModifiedPartitionsMarkerPaths();
    bool anySet = false;
    for (std::size_t slot = 0; slot < markers.size(); ++slot) {
        anySet = setIn(markers[slot], slot) || anySet;
    }
    if (!anySet) {
        DAX_THROW(Common::Utils::GenericException(),
                  Common::Utils::errinfo_description("Could not set ModifiedPartitionsMarker on any avilable slot"));
    }
}

bool isAnySet() {
    const std::vector<path> markers = getModifiedPartitionsMarkerPaths();
    return std::any_of(markers.begin(), markers.end(), [](const path& marker) { return exists(marker); });
}

void remove() {
    for (const path& marker : getModifiedPartitionsMarkerPaths()) {
        boost::filesystem::remove(marker);
    }
}

} // namespace ModifiedPartitionsMarkers
} // namespace Platform
} // namespace DAX
