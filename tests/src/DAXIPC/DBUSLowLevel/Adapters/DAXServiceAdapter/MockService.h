#pragma once

#include <boost/date_time/posix_time/posix_time_io.hpp>
#include <boost/optional/optional_io.hpp>
#include <gmock/gmock.h>

#include "Common/DBUSWrapper/IDBUSEventsSubscriber.h"
#include "ServiceInterface/IServiceManager.h"

namespace DAX::Tests {

class MockServiceTransaction : public Service::IServiceTransaction {
public:
    MOCK_METHOD(boost::optional<bool>, isSearchingPossible, (), (override));
    MOCK_METHOD(Service::ServiceTransactionProgress, getSearchProgress, (), (override));
    MOCK_METHOD(Service::ServiceTransactionProgress, getInstallationProgress, (), (override));
    MOCK_METHOD(Service::ServiceTransactionProgress, getFinalizationProgress, (), (override));
    MOCK_METHOD(Service::ServiceSearchResult, getSearchResult, (), (override));
    MOCK_METHOD(std::list<std::string>, getModelsSearchResult, (), (override));
    MOCK_METHOD(void, startSearching, (std::string), (override));
    MOCK_METHOD(void, startModelsSearching, (), (override));
    MOCK_METHOD(void, startInstallation, (const std::set<std::string>&), (override));
    MOCK_METHOD(void, startFinalization, (const std::set<std::string>&, bool), (override));
    MOCK_METHOD(void, cancelServiceTransaction, (const std::string&), (override));
};

class MockService : public Service::IService {
public:
    MOCK_METHOD(std::shared_ptr<Service::IServiceTransaction>, startNewTransaction, (DAXCommon::UpgradeType),
                (override));
    MOCK_METHOD(DAXCommon::ServiceClientPriority, getClientPriority, (), (override));
    MOCK_METHOD(void, invalidate, (const std::string&), (override));
};

class MockServiceManager : public Service::IServiceManager {
public:
    MOCK_METHOD(boost::optional<boost::posix_time::ptime>, getLastSearchingForUpgradeDate, (), (override));
    MOCK_METHOD(std::vector<DAXCommon::UpgradeType>, getSupportedUpgradeTypes, (), (override));
    MOCK_METHOD(std::shared_ptr<Service::IService>, getService,
                (DAXCommon::ServiceClientPriority, const std::string&, DAXCommon::ServiceTransactionType), (override));
    MOCK_METHOD(bool, getServiceOwner,
                (DAXCommon::ServiceClientPriority&, std::string&, DAXCommon::ServiceTransactionType&), (override));
    MOCK_METHOD(std::string, getCurrentVersion, (), (override));
    MOCK_METHOD(Service::ExternalLockId, acquireExternalLock, (const std::string&, DAXCommon::ServiceClientPriority),
                (override));
    MOCK_METHOD(void, releaseExternalLock, (const std::string&, Service::ExternalLockId), (override));
    MOCK_METHOD(void, scheduleFactoryReset, (), (override));
};

class MockEventsSubscriber : public Common::DBUSWrapper::IDBUSEventsSubscriber {
public:
    MOCK_METHOD(void, subscribeForConnectionCloseEvent, (const std::string&), (override));
    MOCK_METHOD(void, unsubscribeFromConnectionCloseEvent, (), (override));
};

// Hands out one service manager that was made before.
class OneServiceManagerFactory : public Service::IServiceManager::IServiceManagerFactory {
public:
    explicit OneServiceManagerFactory(std::unique_ptr<Service::IServiceManager> manager)
        : m_manager(std::move(manager)) {}

    std::unique_ptr<Service::IServiceManager> create() override { return std::move(m_manager); }

private:
    std::unique_ptr<Service::IServiceManager> m_manager;
};

} // namespace DAX::Tests
