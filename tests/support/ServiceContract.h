#pragma once

#include <set>
#include <string>
#include <vector>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"

namespace DAX::Tests {

// What callers of the service manager's object may rely on, for tests that loop over all of it.

// Which of a client's connections a method is for. Those of a session and of a transaction refuse all others.
enum class Caller { MANAGER, SESSION, TRANSACTION };

struct ServiceMethod {
    std::string name;
    Caller caller;
    bool changes = false; // a normal answer may mean that the session, the transaction, a lock or a file has changed
};

// All methods.
inline const std::vector<ServiceMethod>& serviceMethods() {
    namespace Manager = DAXIPC::DBUSLowLevel::DBUSNames::DBUSService::DBUSIServiceManager::Methods;
    namespace Session = DAXIPC::DBUSLowLevel::DBUSNames::DBUSService::DBUSIService::Methods;
    namespace Transaction = DAXIPC::DBUSLowLevel::DBUSNames::DBUSService::DBUSIServiceTransaction::Methods;
    static const std::vector<ServiceMethod> methods{
        {Manager::getService, Caller::MANAGER, true},
        {Manager::getServiceOwner, Caller::MANAGER},
        {Manager::getSupportedUpgradeTypes, Caller::MANAGER},
        {Manager::getLastSearchingForUpgradeDate, Caller::MANAGER},
        {Manager::getCurrentVersion, Caller::MANAGER},
        {Manager::acquireExternalLock, Caller::MANAGER, true},
        {Manager::releaseExternalLock, Caller::MANAGER, true},
        {Manager::scheduleFactoryReset, Caller::MANAGER},
        {Manager::helloMessage, Caller::MANAGER, true},
        {Session::getClientPriority, Caller::SESSION},
        {Session::startNewTransaction, Caller::SESSION, true},
        {Session::invalidate, Caller::SESSION, true},
        {Transaction::isSearchingPossible, Caller::TRANSACTION},
        {Transaction::startSearching, Caller::TRANSACTION},
        {Transaction::startModelsSearching, Caller::TRANSACTION},
        {Transaction::getSearchProgress, Caller::TRANSACTION},
        {Transaction::getSearchResult, Caller::TRANSACTION},
        {Transaction::getModelsSearchResult, Caller::TRANSACTION},
        {Transaction::startInstallation, Caller::TRANSACTION, true},
        {Transaction::getInstallationProgress, Caller::TRANSACTION},
        {Transaction::startFinalization, Caller::TRANSACTION, true},
        {Transaction::getFinalizationProgress, Caller::TRANSACTION},
        {Transaction::cancelServiceTransaction, Caller::TRANSACTION, true},
    };
    return methods;
}

// The one method that does not read its parameters at all.
inline bool readsParameters(const ServiceMethod& method) {
    return method.name != DAXIPC::DBUSLowLevel::DBUSNames::DBUSService::DBUSIServiceManager::Methods::getServiceOwner;
}

// All names under which an exception crosses the bus.
inline const std::set<std::string>& wireExceptionNames() {
    static const std::set<std::string> names{
        "TransactionInvalidatedException",
        "CUpdateFailed",
        "CUSBReadError",
        "CNetworkTransferError",
        "CUSBImageCorrupted",
        "CUSBDecryptionError",
        "CImageCorrupted",
        "CWrongKeys",
        "CImageLacksIntegrity",
        "ExternalLockDenied",
        "DAXUnknownException",
        "CWildcardImageNotAllowedException",
        "InsufficientRWStorageSpace",
    };
    return names;
}

} // namespace DAX::Tests
