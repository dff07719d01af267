#include "Platform/SystemAPI/VIPProcessSystemAPI/VIPProcessSystemAPI.h"

#include <proc_stat.h>

#include "Common/Logging/LoggingStream.h"

namespace DAX {
namespace Platform {
namespace VIPProcessSystemAPI {

void registerVIPProcess() {
    DAX_LOG(INF) << "Registering VIP process.";
    proc_stat_set_vip_process();
}

} // namespace VIPProcessSystemAPI
} // namespace Platform
} // namespace DAX
