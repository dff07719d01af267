#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/ModifiedPartitionsMarkers.h"

#include <exception>
#include <vector>

#include <boost/exception/diagnostic_information.hpp>
#include <boost/filesystem/operations.hpp>

#include "Common/IO/FlagFile.h"
#include "Common/Logging/LoggingStream.h"
#include "Platform/ProductPaths/IProductPaths.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Platform::ModifiedPartitionsMarkers {
namespace {

using boost::filesystem::path;

// In the order of the slots.
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

// The failures of an operation that tries all slots: the first one is thrown at the end, the later ones are only
// logged.
class Failure {
public:
    explicit Failure(const char* operation) : m_operation(operation) {}

    // Call it only within a catch block.
    void keep() {
        if (!m_first) {
            m_first = std::current_exception();
            return;
        }
        DAX_LOG(ERR) << "Exception caught while trying to " << m_operation << ": "
                     << boost::current_exception_diagnostic_information(true);
    }

    void raise() const {
        if (m_first) {
            std::rethrow_exception(m_first);
        }
    }

private:
    const char* const m_operation;
    std::exception_ptr m_first;
};

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
    Failure failure("isModifiedPartitionsMarkerSet");
    for (const path& marker : getModifiedPartitionsMarkerPaths()) {
        try {
            if (exists(marker)) {
                return true;
            }
        } catch (...) {
            failure.keep();
        }
    }
    failure.raise();
    return false;
}

void remove() {
    Failure failure("removeModifiedPartitionsMarker");
    for (const path& marker : getModifiedPartitionsMarkerPaths()) {
        try {
            Common::IO::removeFlagFile(marker);
        } catch (...) {
            failure.keep();
        }
    }
    failure.raise();
}

} // namespace DAX::Platform::ModifiedPartitionsMarkers
