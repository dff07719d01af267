#pragma once

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <thread>

#include "Common/DBUSWrapper/IDBUSAdapter.h"
#include "DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/Implementation/CServiceManagerAdapter.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "Platform/ProductPaths/IProductPaths.h"
#include "Service/ServiceManager/CServiceManagerFactory.h"
#include "support/FakePowerMode.h"
#include "support/LiveService.h"

namespace DAX::Fuzz {

// The daemon's handler over the real service logic and a fake core. The one connection that may call RESTORE can have
// it made afresh while its adapter goes on.
class RestorableHandler : public Common::DBUSWrapper::IDBUSRequestsHandler {
public:
    static constexpr char RESTORE[] = "restoreAll";

    RestorableHandler() { restore(); }

    // Call it before the first message.
    void obey(const std::string& connection) { m_master = connection; }

    // How often the handler has refused to be told of a client's death. The adapter keeps such a client on its list.
    unsigned int refusedDeaths() const { return m_refusedDeaths; }

    bool handleRequest(const std::string& method, std::stringstream& in, std::stringstream& out,
                       std::string& exceptionName, const char* sender) override {
        if (method == RESTORE && sender == m_master) {
            restore();
            return true;
        }
        return m_handler->handleRequest(method, in, out, exceptionName, sender);
    }
    void introspect(std::stringstream& out) override { m_handler->introspect(out); }
    void useThisEventSubscriber(Common::DBUSWrapper::IDBUSEventsSubscriber& subscriber) override {
        m_subscriber = &subscriber;
        m_handler->useThisEventSubscriber(subscriber);
    }
    void clientDisconnected(const char* sender) override {
        try {
            m_handler->clientDisconnected(sender);
        } catch (...) {
            ++m_refusedDeaths;
            throw;
        }
    }

private:
    void restore() {
        m_handler.reset();
        m_core->takeCalls();
        std::filesystem::create_directories(Platform::IProductPaths::getDAXPartitionPath().string());
        std::filesystem::remove(Platform::IProductPaths::getInstallationLockPath().string());
        m_handler = std::make_unique<DAXIPC::DBUSLowLevel::CServiceManagerAdapter>(
            std::make_shared<Service::CServiceManagerFactory>(
                std::make_shared<Tests::FakeCoreFactory>(m_core),
                std::make_shared<Tests::FakePowerModeFactory>(std::make_shared<Tests::FakePowerModeScript>())));
        if (m_subscriber != nullptr) {
            m_handler->useThisEventSubscriber(*m_subscriber);
        }
    }

    const std::shared_ptr<Tests::FakeCoreScript> m_core = Tests::LiveService::makeCore();
    std::unique_ptr<DAXIPC::DBUSLowLevel::CServiceManagerAdapter> m_handler;
    Common::DBUSWrapper::IDBUSEventsSubscriber* m_subscriber = nullptr;
    std::string m_master;
    std::atomic<unsigned int> m_refusedDeaths{0};
};

// The daemon's adapter with that handler, on a thread of its own. A bus and the device's root must exist before. The
// process ends when the adapter's loop ends in any other way than by the destructor.
class BusService {
public:
    explicit BusService(const std::string& master) {
        m_handler->obey(master);
        m_loop = std::thread([this] { listen(); });
    }
    ~BusService() {
        m_stop = true;
        m_loop.join();
    }
    BusService(const BusService&) = delete;
    BusService& operator=(const BusService&) = delete;

    unsigned int refusedDeaths() const { return m_handler->refusedDeaths(); }

private:
    void listen() {
        namespace Manager = DAXIPC::DBUSLowLevel::DBUSNames::DBUSService::DBUSIServiceManager;
        const auto adapter = Common::DBUSWrapper::IDBUSAdapter::createDefaultAdapterFactory()->create(
            Common::DBUSWrapper::IDBUSWrapper::SYSTEM, Manager::OBJECT_PATH, m_handler, false);
        const std::function<bool()> stopCondition = [this] { return m_stop.load(); };
        adapter->listenDBUS(1, 0, 1, stopCondition, boost::none, Manager::CONNECTION_NAME);
        if (!m_stop) {
            std::fprintf(stderr, "the adapter's loop has ended\n");
            std::abort();
        }
    }

    const std::shared_ptr<RestorableHandler> m_handler = std::make_shared<RestorableHandler>();
    std::atomic<bool> m_stop{false};
    std::thread m_loop;
};

} // namespace DAX::Fuzz
