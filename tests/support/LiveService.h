#pragma once

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/Implementation/CServiceManagerAdapter.h"
#include "Platform/ProductPaths/IProductPaths.h"
#include "Service/ServiceManager/CServiceManagerFactory.h"
#include "src/DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/AdapterClient.h"
#include "support/DebugParameters.h"
#include "support/FakeCore.h"
#include "support/FakePowerMode.h"
#include "support/ServiceContract.h"

namespace DAX::Tests {

// The real request handler over the real service logic and a fake core. A session and a transaction are open, so that
// there is something to answer every method. The device's root must exist before.
//
// The core's search has succeeded, so that its result may be asked for at any time.
class LiveService {
public:
    static constexpr char PROXY_OF_SESSION[] = "Proxy-1";
    static constexpr char PROXY_OF_TRANSACTION[] = "Proxy-2";

    LiveService() { build(); }

    // The script of its core.
    static std::shared_ptr<FakeCoreScript> makeCore() {
        auto core = std::make_shared<FakeCoreScript>();
        core->searchResult.result = Core::TRANSACTION_SUCCESS;
        core->searchResult.upgradeType = DAXCommon::OTN;
        core->searchResult.upgradeId = {1, 2, 255};
        core->searchResult.version = std::string("1100");
        core->searchResult.updateInfo = {'<', 'u', '/', '>'};
        core->models = {"KV-55", "KV-65"};
        return core;
    }

    // Calls from the connection that the method is for, or from another one.
    Reply call(const ServiceMethod& method, const std::string& parameters) {
        return call(method, method.caller, parameters);
    }
    Reply call(const ServiceMethod& method, Caller caller, const std::string& parameters) {
        const Reply reply = client(caller).callWith(method.name, parameters);
        m_changed = m_changed || (reply.normal && method.changes);
        return reply;
    }

    // Restores everything that the calls so far have changed: the session, the transaction, the locks and the files.
    void restore() {
        m_core->takeCalls();
        if (std::exchange(m_changed, false)) {
            build();
        }
    }

private:
    class Subscriber : public Common::DBUSWrapper::IDBUSEventsSubscriber {
        void subscribeForConnectionCloseEvent(const std::string&) override {}
        void unsubscribeFromConnectionCloseEvent() override {}
    };

    void build() {
        m_adapter.reset();
        std::filesystem::create_directories(Platform::IProductPaths::getDAXPartitionPath().string());
        std::filesystem::remove(Platform::IProductPaths::getInstallationLockPath().string());
        m_adapter = std::make_unique<DAXIPC::DBUSLowLevel::CServiceManagerAdapter>(
            std::make_shared<Service::CServiceManagerFactory>(
                std::make_shared<FakeCoreFactory>(m_core),
                std::make_shared<FakePowerModeFactory>(std::make_shared<FakePowerModeScript>())));
        m_adapter->useThisEventSubscriber(m_subscriber);
        open();
    }

    AdapterClient client(Caller caller) {
        return AdapterClient(*m_adapter, ":1." + std::to_string(static_cast<int>(caller)));
    }

    void open() {
        const std::string connection = ":1.1";
        const std::string session = PROXY_OF_SESSION;
        const std::string transaction = PROXY_OF_TRANSACTION;
        AdapterClient sessions = client(Caller::SESSION);
        AdapterClient transactions = client(Caller::TRANSACTION);
        const bool opened =
            client(Caller::MANAGER).call("getService", 4, std::string("update app"), 2, session, connection).normal &&
            sessions.call("helloMessage", session).normal &&
            sessions.call("startNewTransaction", 2, transaction, connection).normal &&
            transactions.call("helloMessage", transaction).normal && transactions.call("isSearchingPossible").normal;
        if (!opened) {
            throw std::logic_error("no session and transaction can be opened");
        }
    }

    const DebugParameters m_debugParameters;
    const std::shared_ptr<FakeCoreScript> m_core = makeCore();
    Subscriber m_subscriber;
    std::unique_ptr<DAXIPC::DBUSLowLevel::CServiceManagerAdapter> m_adapter;
    bool m_changed = false;
};

} // namespace DAX::Tests
