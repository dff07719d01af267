#pragma once

#include <string>

namespace DAX::DAXIPC::DBUSLowLevel {

// Every name that the update stack uses on the bus. All objects of one program share one connection name, one object
// path and one interface; they differ only in their methods.
namespace DBUSNames {

namespace DBUSExceptions {
inline constexpr char UnknownException[] = "UnknownException"; // not used
}

namespace DBUSService {

namespace DBUSIServiceManager {
inline constexpr char CONNECTION_NAME[] = "org.kovan.tv.dax.service.servicemanager";
inline constexpr char INTERFACE_NAME[] = "org.kovan.tv.dax.service.iservicemanager";
inline constexpr char OBJECT_PATH[] = "/org/kovan/tv/dax/service/cservicemanager";

namespace Methods {
inline constexpr char getService[] = "getService";
inline constexpr char getServiceOwner[] = "getServiceOwner";
inline constexpr char getSupportedUpgradeTypes[] = "getSupportedUpgradeTypes";
inline constexpr char getLastSearchingForUpgradeDate[] = "getLastSearchingForUpgradeDate";
inline constexpr char getCurrentVersion[] = "getCurrentVersion";
inline constexpr char acquireExternalLock[] = "acquireExternalLock";
inline constexpr char releaseExternalLock[] = "releaseExternalLock";
inline constexpr char scheduleFactoryReset[] = "scheduleFactoryReset";
inline constexpr char helloMessage[] = "helloMessage";
} // namespace Methods
} // namespace DBUSIServiceManager

namespace DBUSIService::Methods {
inline constexpr char getClientPriority[] = "getClientPriority";
inline constexpr char startNewTransaction[] = "startNewTransaction";
inline constexpr char stopTransaction[] = "stopTransaction"; // not served
inline constexpr char invalidate[] = "invalidate";
} // namespace DBUSIService::Methods

namespace DBUSIServiceTransaction::Methods {
inline constexpr char isSearchingPossible[] = "isSearchingPossible";
inline constexpr char startSearching[] = "startSearching";
inline constexpr char startModelsSearching[] = "startModelsSearching";
inline constexpr char getSearchProgress[] = "getSearchProgress";
inline constexpr char getSearchResult[] = "getSearchResult";
inline constexpr char getModelsSearchResult[] = "getModelsSearchResult";
inline constexpr char startInstallation[] = "startInstallation";
inline constexpr char getInstallationProgress[] = "getInstallationProgress";
inline constexpr char startFinalization[] = "startFinalization";
inline constexpr char getFinalizationProgress[] = "getFinalizationProgress";
inline constexpr char cancelServiceTransaction[] = "cancelServiceTransaction";
} // namespace DBUSIServiceTransaction::Methods

} // namespace DBUSService

namespace DBUSCore {

namespace DBUSICore {
inline std::string CONNECTION_NAME() {
    return "org.kovan.tv.dax.core.TV";
}
inline std::string INTERFACE_NAME() {
    return "org.kovan.tv.dax.core.icoreTV";
}
inline std::string OBJECT_PATH() {
    return "/org/kovan/tv/dax/core/ccoreTV";
}

namespace Methods {
inline constexpr char helloMessage[] = "helloMessage";
inline constexpr char createTransaction[] = "createTransaction";
inline constexpr char getCurrentVersion[] = "getCurrentVersion";
inline constexpr char getSupportedUpgradeTypes[] = "getSupportedUpgradeTypes";
inline constexpr char scheduleFactoryReset[] = "scheduleFactoryReset";
} // namespace Methods
} // namespace DBUSICore

namespace DBUSICoreTransaction::Methods {
inline constexpr char isSearchingPossible[] = "isSearchingPossible";
inline constexpr char startSearching[] = "startSearching";
inline constexpr char startModelsSearching[] = "startModelsSearching";
inline constexpr char getSearchProgress[] = "getSearchProgress";
inline constexpr char getSearchResult[] = "getSearchResult";
inline constexpr char getModelsSearchResult[] = "getModelsSearchResult";
inline constexpr char startInstallation[] = "startInstallation";
inline constexpr char getInstallationProgress[] = "getInstallationProgress";
inline constexpr char startFinalization[] = "startFinalization";
inline constexpr char getFinalizationProgress[] = "getFinalizationProgress";
inline constexpr char cancelCoreTransaction[] = "cancelCoreTransaction";
} // namespace DBUSICoreTransaction::Methods

} // namespace DBUSCore

// A daemon that this program does not talk to; the names are here for other programs.
namespace DBUSIOTAScheduler {
inline constexpr char CONNECTION_NAME[] = "org.kovan.tv.dax.otascheduler.otascheduler";
inline constexpr char INTERFACE_NAME[] = "org.kovan.tv.dax.otascheduler.iotascheduler";
inline constexpr char OBJECT_PATH[] = "/org/kovan/tv/dax/otascheduler/cotascheduler";

namespace Methods {
inline constexpr char registerSchedules[] = "registerSchedules";
inline constexpr char registerImmediateStandbyUpgrade[] = "registerImmediateStandbyUpgrade";
inline constexpr char getActiveSchedule[] = "getActiveSchedule";
inline constexpr char getClosestSchedule[] = "getClosestSchedule";
inline constexpr char removeSchedule[] = "removeSchedule";
inline constexpr char removeScheduleGroup[] = "removeScheduleGroup";
inline constexpr char removeAllSchedules[] = "removeAllSchedules";
} // namespace Methods
} // namespace DBUSIOTAScheduler

} // namespace DBUSNames
} // namespace DAX::DAXIPC::DBUSLowLevel
