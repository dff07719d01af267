#pragma once

#include <list>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include <boost/date_time/posix_time/ptime.hpp>
#include <boost/optional.hpp>

#include "DAXCommon/ServiceClientPriority.h"
#include "DAXCommon/ServiceTransactionType.h"
#include "DAXCommon/UpgradeType.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/Method.h"
#include "ServiceInterface/ServiceSearchResult.h"
#include "ServiceInterface/ServiceTransactionProgress.h"

// What the daemon's one object answers: the methods of the manager, of a session and of a transaction. The adapter, the
// clients' proxies and the decoder work from these descriptions.
namespace DAX::DAXIPC::DBUSLowLevel::ServiceMethods {

namespace ManagerNames = DBUSNames::DBUSService::DBUSIServiceManager::Methods;
namespace SessionNames = DBUSNames::DBUSService::DBUSIService::Methods;
namespace TransactionNames = DBUSNames::DBUSService::DBUSIServiceTransaction::Methods;

using Items = std::set<std::string>;

// The reply's bus name is empty when the request is refused.
inline constexpr Method getService{
    ManagerNames::getService,
    Archive<DAXCommon::ServiceClientPriority, std::string, DAXCommon::ServiceTransactionType, std::string, std::string>{
        "priority", "clientName", "transactionType", "sessionId", "connectionId"},
    Archive<std::string>{"busName"}};
// The only one without a request. Without an owner, the last three say nothing.
inline constexpr Method getServiceOwner{
    ManagerNames::getServiceOwner, NoArchive{},
    Archive<bool, DAXCommon::ServiceClientPriority, std::string, DAXCommon::ServiceTransactionType>{
        "isOwned", "priority", "clientName", "transactionType"}};
inline constexpr Method getSupportedUpgradeTypes{ManagerNames::getSupportedUpgradeTypes, Archive<>{},
                                                 Archive<std::vector<DAXCommon::UpgradeType>>{"upgradeTypes"}};
inline constexpr Method getLastSearchingForUpgradeDate{ManagerNames::getLastSearchingForUpgradeDate, Archive<>{},
                                                       Archive<boost::optional<boost::posix_time::ptime>>{"date"}};
inline constexpr Method getCurrentVersion{ManagerNames::getCurrentVersion, Archive<>{},
                                          Archive<std::string>{"version"}};
inline constexpr Method acquireExternalLock{
    ManagerNames::acquireExternalLock, Archive<std::string, DAXCommon::ServiceClientPriority>{"clientName", "priority"},
    Archive<unsigned int>{"lockId"}};
inline constexpr Method releaseExternalLock{ManagerNames::releaseExternalLock,
                                            Archive<std::string, unsigned int>{"clientName", "lockId"}, NoArchive{}};
inline constexpr Method scheduleFactoryReset{ManagerNames::scheduleFactoryReset, Archive<>{}, NoArchive{}};
// The id of a session or of a transaction.
inline constexpr Method helloMessage{ManagerNames::helloMessage, Archive<std::string>{"id"}, Archive<>{}};

inline constexpr Method getClientPriority{SessionNames::getClientPriority, Archive<>{},
                                          Archive<unsigned int>{"priority"}};
inline constexpr Method startNewTransaction{
    SessionNames::startNewTransaction,
    Archive<DAXCommon::UpgradeType, std::string, std::string>{"upgradeType", "transactionId", "connectionId"},
    Archive<std::string>{"busName"}};
inline constexpr Method invalidate{SessionNames::invalidate, Archive<std::string>{"reason"}, NoArchive{}};

inline constexpr Method isSearchingPossible{TransactionNames::isSearchingPossible, Archive<>{},
                                            Archive<boost::optional<bool>>{"isPossible"}};
inline constexpr Method startSearching{TransactionNames::startSearching, Archive<std::string>{"searchParameter"},
                                       NoArchive{}};
inline constexpr Method startModelsSearching{TransactionNames::startModelsSearching, Archive<>{}, NoArchive{}};
inline constexpr Method getSearchProgress{TransactionNames::getSearchProgress, Archive<>{},
                                          Archive<Service::ServiceTransactionProgress>{"progress"}};
inline constexpr Method getSearchResult{TransactionNames::getSearchResult, Archive<>{},
                                        Archive<Service::ServiceSearchResult>{"searchResult"}};
inline constexpr Method getModelsSearchResult{TransactionNames::getModelsSearchResult, Archive<>{},
                                              Archive<std::list<std::string>>{"models"}};
inline constexpr Method startInstallation{TransactionNames::startInstallation, Archive<Items>{"items"}, NoArchive{}};
inline constexpr Method getInstallationProgress{TransactionNames::getInstallationProgress, Archive<>{},
                                                Archive<Service::ServiceTransactionProgress>{"progress"}};
inline constexpr Method startFinalization{TransactionNames::startFinalization, Archive<Items, bool>{"items", "flag"},
                                          NoArchive{}};
inline constexpr Method getFinalizationProgress{TransactionNames::getFinalizationProgress, Archive<>{},
                                                Archive<Service::ServiceTransactionProgress>{"progress"}};
inline constexpr Method cancelServiceTransaction{TransactionNames::cancelServiceTransaction,
                                                 Archive<std::string>{"reason"}, NoArchive{}};

// All of them.
inline constexpr std::tuple ALL{
    getService,          getServiceOwner,         getSupportedUpgradeTypes, getLastSearchingForUpgradeDate,
    getCurrentVersion,   acquireExternalLock,     releaseExternalLock,      scheduleFactoryReset,
    helloMessage,        getClientPriority,       startNewTransaction,      invalidate,
    isSearchingPossible, startSearching,          startModelsSearching,     getSearchProgress,
    getSearchResult,     getModelsSearchResult,   startInstallation,        getInstallationProgress,
    startFinalization,   getFinalizationProgress, cancelServiceTransaction};

} // namespace DAX::DAXIPC::DBUSLowLevel::ServiceMethods
