#pragma once

#include <list>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include <boost/optional.hpp>

#include "CoreInterface/SearchResult.h"
#include "CoreInterface/SearchingTransactionParameters.h"
#include "CoreInterface/TransactionProgress.h"
#include "DAXCommon/UpgradeType.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/Method.h"

// What an update core answers: its own methods and those of a transaction. The daemon's proxies, the simulated core and
// the decoder work from these descriptions.
namespace DAX::DAXIPC::DBUSLowLevel::CoreMethods {

namespace CoreNames = DBUSNames::DBUSCore::DBUSICore::Methods;
namespace TransactionNames = DBUSNames::DBUSCore::DBUSICoreTransaction::Methods;

using Items = std::set<std::string>;

inline constexpr Method getCurrentVersion{CoreNames::getCurrentVersion, Archive<>{}, Archive<std::string>{"version"}};
inline constexpr Method getSupportedUpgradeTypes{CoreNames::getSupportedUpgradeTypes, Archive<>{},
                                                 Archive<std::vector<DAXCommon::UpgradeType>>{"upgradeTypes"}};
inline constexpr Method scheduleFactoryReset{CoreNames::scheduleFactoryReset, Archive<>{}, NoArchive{}};
// The reply's bus name is empty when the core refuses.
inline constexpr Method createTransaction{
    CoreNames::createTransaction,
    Archive<Core::SearchingTransactionParameters, std::string, std::string>{"parameters", "proxyId", "connectionId"},
    Archive<std::string>{"busName"}};
inline constexpr Method helloMessage{CoreNames::helloMessage, Archive<std::string>{"proxyId"}, NoArchive{}};

inline constexpr Method isSearchingPossible{TransactionNames::isSearchingPossible, Archive<>{},
                                            Archive<boost::optional<bool>>{"isPossible"}};
inline constexpr Method startSearching{TransactionNames::startSearching, Archive<std::string>{"searchParameter"},
                                       NoArchive{}};
inline constexpr Method startModelsSearching{TransactionNames::startModelsSearching, Archive<>{}, NoArchive{}};
inline constexpr Method getSearchProgress{TransactionNames::getSearchProgress, Archive<>{},
                                          Archive<Core::TransactionProgress>{"progress"}};
inline constexpr Method getSearchResult{TransactionNames::getSearchResult, Archive<>{},
                                        Archive<Core::SearchResult>{"searchResult"}};
inline constexpr Method getModelsSearchResult{TransactionNames::getModelsSearchResult, Archive<>{},
                                              Archive<std::list<std::string>>{"models"}};
inline constexpr Method startInstallation{TransactionNames::startInstallation, Archive<Items>{"items"}, NoArchive{}};
inline constexpr Method getInstallationProgress{TransactionNames::getInstallationProgress, Archive<>{},
                                                Archive<Core::TransactionProgress>{"progress"}};
inline constexpr Method startFinalization{
    TransactionNames::startFinalization,
    Archive<Items, boost::optional<std::vector<unsigned char>>, bool>{"items", "upgradeId", "flag"}, NoArchive{}};
inline constexpr Method getFinalizationProgress{TransactionNames::getFinalizationProgress, Archive<>{},
                                                Archive<Core::TransactionProgress>{"progress"}};
inline constexpr Method cancelCoreTransaction{TransactionNames::cancelCoreTransaction, Archive<std::string>{"reason"},
                                              NoArchive{}};

// All of them.
inline constexpr std::tuple ALL{getCurrentVersion,
                                getSupportedUpgradeTypes,
                                scheduleFactoryReset,
                                createTransaction,
                                helloMessage,
                                isSearchingPossible,
                                startSearching,
                                startModelsSearching,
                                getSearchProgress,
                                getSearchResult,
                                getModelsSearchResult,
                                startInstallation,
                                getInstallationProgress,
                                startFinalization,
                                getFinalizationProgress,
                                cancelCoreTransaction};

} // namespace DAX::DAXIPC::DBUSLowLevel::CoreMethods
