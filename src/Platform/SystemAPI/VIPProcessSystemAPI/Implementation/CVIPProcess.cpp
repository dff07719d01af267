#include <proc_stat.h>

#include "Common/Logging/LoggingStream.h"
#include "Platform/SystemAPI/VIPProcessSystemAPI/VIPProcessSystemAPI.h"

namespace DAX::Platform::VIPProcessSystemAPI {

void registerVIPProcess() {
    DAX_LOG(INF) << "Registering VIP process.";
    proc_stat_set_vip_process();
}

} // namespace DAX::Platform::VIPProcessSystemAPI
