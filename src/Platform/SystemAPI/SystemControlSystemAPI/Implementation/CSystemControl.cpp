#include "Platform/SystemAPI/SystemControlSystemAPI/ISystemControl.h"

#include <boost/exception/diagnostic_information.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Platform/SystemAPI/VconfSystemAPI/IVConf.h"

namespace DAX {
namespace Platform {

const char* ISystemControl::DAXRevisionDescription() {
    return "Changelist: 0, EmulatedProductVersion: ., UI_TYPE=EFL_UI, CMakeTime: 1764727676";
}

bool ISystemControl::isCellularConnectionAllowed() {
    return VConfT<int>("db/menu/support/softwareupdate/use_cellular_int").getOr(0) == 1;
}

bool ISystemControl::wasAnySuccessfulUpgrade() {
    try {
        const int value = VConfT<int>(SUCCESSFUL_UPGRADE_VCONF_KEY).get();
        DAX_LOG(DBG) << "Success getting info about successful upgrade from vconf. Returned value: " << value;
        DAX_LOG(INF) << "Successful upgrade has " << (value == 1 ? "" : "not ")
                     << "occurred since the last factory reset.";
        return value == 1;
    } catch (...) {
        DAX_LOG(ERR) << "Exception caught while getting wasAnySuccessfulUpgrade value from VConf: "
                     << boost::current_exception_diagnostic_information(true);
        return false;
    }
}

} // namespace Platform
} // namespace DAX
