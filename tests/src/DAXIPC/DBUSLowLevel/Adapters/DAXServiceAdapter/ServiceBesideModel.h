#pragma once

#include <memory>
#include <string>
#include <vector>

#include <boost/optional.hpp>

#include "Common/DBUSWrapper/IDBUSEventsSubscriber.h"
#include "DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/Implementation/CServiceManagerAdapter.h"
#include "src/DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/AdapterClient.h"
#include "src/DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/ReferenceModel.h"
#include "support/FakeCore.h"
#include "support/FakePowerMode.h"

namespace DAX::Tests {

// The real handler over the real service logic, with the reference model beside it: every operation is done to both.
// The device's root and the debug parameters must exist before. One object at a time in a process.
class ServiceBesideModel {
public:
    ServiceBesideModel();
    ServiceBesideModel(const ServiceBesideModel&) = delete;
    ServiceBesideModel& operator=(const ServiceBesideModel&) = delete;
    ~ServiceBesideModel();

    // What clients do. `from` is the connection that calls.
    void getService(const std::string& from, int priority, const std::string& name, int type, const std::string& proxy);
    void hello(const std::string& from, const std::string& proxy);
    void getClientPriority(const std::string& from);
    void startNewTransaction(const std::string& from, int upgradeType, const std::string& proxy,
                             bool coreRefuses = false);
    void invalidate(const std::string& from, const std::string& reason);
    void isSearchingPossible(const std::string& from);
    void cancel(const std::string& from, const std::string& reason, bool coreFails = false);
    void acquireLock(const std::string& from, const std::string& name, int priority);
    void releaseLock(const std::string& from, const std::string& name, unsigned int id);
    void disconnect(const std::string& connection);

    // What happens to the device.
    void changePowerMode();
    void setInstallationLock(bool locked);

    // Destroys the handler, and the manager behind it. Only `difference` may be called afterwards.
    void end();

    // Where the two disagree: on the answer to the last operation, on what happened since the last look (at the core,
    // in the log, in the settings store), on the subscription or on the owner. Empty when they agree.
    std::string difference();

    // Drops what happened since the last look.
    void forget();

    const ReferenceModel& model() const { return m_model; }

    // The answer to the last operation, as a client sees it.
    const Expected& result() const { return m_result; }

private:
    // Remembers the one subscription, as the adapter of the bus does.
    class Subscription : public Common::DBUSWrapper::IDBUSEventsSubscriber {
    public:
        void subscribeForConnectionCloseEvent(const std::string& connection) override { m_connection = connection; }
        void unsubscribeFromConnectionCloseEvent() override { m_connection.reset(); }
        const boost::optional<std::string>& connection() const { return m_connection; }

    private:
        boost::optional<std::string> m_connection;
    };

    Reply call(const std::string& from, const std::string& method, const std::string& parameters);
    void compare(const Reply& reply, const std::string& value, const Expected& expected);
    Expected realOwner();

    std::shared_ptr<FakeCoreScript> m_core;
    std::shared_ptr<FakePowerModeScript> m_powerMode;
    Subscription m_subscription;
    std::unique_ptr<DAXIPC::DBUSLowLevel::CServiceManagerAdapter> m_handler;
    ReferenceModel m_model;
    Expected m_result, m_expected;
};

} // namespace DAX::Tests
