#pragma once

#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/Implementation/CServiceManagerAdapter.h"
#include "src/DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/AdapterClient.h"
#include "src/DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/MockService.h"

namespace DAX::Tests {

const char* const SERVICE_MANAGER_BUS_NAME = "org.kovan.tv.dax.service.servicemanager";

// The real request handler over a mocked service manager, with a client's connections.
class AdapterOverMocks : public testing::Test {
protected:
    AdapterOverMocks() {
        auto owned = std::make_unique<testing::NiceMock<MockServiceManager>>();
        serviceManager = owned.get();
        adapter = std::make_unique<DAXIPC::DBUSLowLevel::CServiceManagerAdapter>(
            std::make_shared<OneServiceManagerFactory>(std::move(owned)));
        adapter->useThisEventSubscriber(subscriber);
        manager = std::make_unique<AdapterClient>(*adapter, ":1.1");
        session = std::make_unique<AdapterClient>(*adapter, ":1.2");
        transactions = std::make_unique<AdapterClient>(*adapter, ":1.3");
        stranger = std::make_unique<AdapterClient>(*adapter, ":1.9");
    }

    // A granted session whose proxy "Proxy-1" has not said hello.
    Reply getService() {
        ON_CALL(*serviceManager, getService).WillByDefault(testing::Return(service));
        return manager->call("getService", 5, std::string("updater"), 2, std::string("Proxy-1"), std::string(":1.2"));
    }

    void openSession() {
        getService();
        session->call("helloMessage", std::string("Proxy-1"));
    }

    Reply startTransaction() {
        ON_CALL(*service, startNewTransaction).WillByDefault([this](DAXCommon::UpgradeType) { return transaction; });
        return session->call("startNewTransaction", 2, std::string("Proxy-2"), std::string(":1.3"));
    }

    void openTransaction() {
        openSession();
        startTransaction();
        transactions->call("helloMessage", std::string("Proxy-2"));
    }

    testing::NiceMock<MockEventsSubscriber> subscriber;
    MockServiceManager* serviceManager;
    std::shared_ptr<testing::NiceMock<MockService>> service = std::make_shared<testing::NiceMock<MockService>>();
    std::shared_ptr<testing::NiceMock<MockServiceTransaction>> transaction =
        std::make_shared<testing::NiceMock<MockServiceTransaction>>();
    std::unique_ptr<DAXIPC::DBUSLowLevel::CServiceManagerAdapter> adapter;
    std::unique_ptr<AdapterClient> manager, session, transactions, stranger;
};

} // namespace DAX::Tests
