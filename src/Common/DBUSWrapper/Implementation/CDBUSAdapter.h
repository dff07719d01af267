#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <string_view>

#include <boost/optional.hpp>
#include <boost/thread/future.hpp>
#include <boost/thread/thread.hpp>
#include <dbus/dbus.h>

#include "Common/DBUSWrapper/IDBUSAdapter.h"
#include "Common/DBUSWrapper/IDBUSEventsSubscriber.h"
#include "Common/DBUSWrapper/Implementation/BusCalls.h"
#include "Common/DBUSWrapper/Implementation/BusClients.h"
#include "Common/DBUSWrapper/Implementation/BusName.h"
#include "Common/DBUSWrapper/Implementation/DBUSConnectionHandle.h"
#include "Common/DBUSWrapper/Implementation/ReusedStream.h"
#include "Common/Utils/ISimpleClock.h"

namespace DAX::Common::DBUSWrapper {

class CDBUSAdapter : public IDBUSAdapter, public IDBUSEventsSubscriber {
public:
    CDBUSAdapter(IDBUSWrapper::DBUSType type, const std::string& objectPath,
                 std::shared_ptr<IDBUSRequestsHandler> handler, bool flag);
    CDBUSAdapter(const CDBUSAdapter&) = delete;
    CDBUSAdapter& operator=(const CDBUSAdapter&) = delete;
    ~CDBUSAdapter() override;

    void activate(int stopConditionIntervalInSeconds, const std::string& connectionName) override;
    void deactivate() override;
    void listenDBUS(unsigned int stopConditionIntervalInSeconds, unsigned int idleTimeoutInSeconds,
                    unsigned int pingIntervalInSeconds, boost::optional<std::function<bool()>> stopCondition,
                    boost::optional<std::function<void()>> pingFunction, const std::string& connectionName) override;

    void subscribeForConnectionCloseEvent(const std::string& connectionName) override;
    void unsubscribeFromConnectionCloseEvent() override;

private:
    class Loop;

    enum ReplyMessageType { REPLY = 0, EXCEPTION = 1, INTROSPECTION = 2 };

    // How far an activation is. To connect may take for ever, and touches nothing of the adapter.
    enum class Start { CONNECTING, BEGUN, GIVEN_UP };

    struct ThreadParams {
        std::shared_ptr<boost::promise<bool>> promise; // empty on the path of listenDBUS
        IDBUSWrapper::DBUSType type;
        CDBUSAdapter* adapter;
        std::string objectPath;
        std::string connectionName;
        std::shared_ptr<std::atomic<Start>> start; // empty on the path of listenDBUS

        // Claims the adapter for this thread; false when the activation has been given up.
        bool begin() const;
    };

    // The run of the adapter.
    static void threadMethod(ThreadParams params, std::shared_ptr<IDBUSRequestsHandler> handler,
                             unsigned int stopConditionIntervalInSeconds, unsigned int idleTimeoutInSeconds,
                             unsigned int pingIntervalInSeconds, boost::optional<std::function<bool()>> stopCondition,
                             boost::optional<std::function<void()>> pingFunction);
    boost::unique_future<bool> startThread(unsigned int stopConditionIntervalInSeconds,
                                           const std::string& connectionName,
                                           std::shared_ptr<std::atomic<Start>>& start);
    void abandonThread(std::atomic<Start>& start);
    void joinThread();
    void openConnection(DBUSConnectionHandle handle, const ThreadParams& params);
    void closeConnection();
    void releaseConnection();
    static void registerAdditionalName(const std::string& name, DBusConnection* connection,
                                       const std::string& objectPath);

    // The clients.
    void registerNewConnection(const char* name);
    void unregisterConnection(const std::string& name);
    void subscribeForNameOwnerChangedSignal(const std::string& name);
    void unsubscribeForNameOwnerChangedSignal(const std::string& name);

    // The callbacks of libdbus, which let no exception out.
    static DBusHandlerResult handleMessage(DBusConnection* connection, DBusMessage* message, void* adapter);
    // The connection's filter: sees every message first.
    static DBusHandlerResult handleSignal(DBusConnection* connection, DBusMessage* message, void* adapter);
    void logFailure() const;

    DBusHandlerResult receiveMessage(DBusConnection* connection, DBusMessage* message);
    DBusHandlerResult handleMethodCall(const char* member, bool introspectable, DBusConnection* connection,
                                       DBusMessage* message);
    void handleRequest(const char* member, std::stringstream& input, DBusConnection* connection, DBusMessage* message);
    static void sendReturnMessage(ReplyMessageType type, const std::string& function, const std::stringstream& data,
                                  DBusMessage* message, DBusConnection* connection);

    DBusHandlerResult handleSignalPrivate(DBusMessage* message);
    DBusHandlerResult handleNameOwnerChanged(DBusMessage* message);
    DBusHandlerResult handleNameAcquired(DBusMessage* message);
    void disconnectDeadClient(const std::string& name);

    std::string m_objectPath;
    std::shared_ptr<IDBUSRequestsHandler> m_handler;
    [[maybe_unused]] bool m_flag;
    boost::optional<std::string> m_closeEventConnection;
    BusCalls m_busCalls;
    BusClients m_clients;
    std::unique_ptr<boost::thread> m_thread;
    bool m_activated = false;
    IDBUSWrapper::DBUSType m_dbusType;
    DBUSConnectionHandle m_dbusConnectionHandle; // null outside the loop
    std::shared_ptr<Utils::ISimpleClock> m_clock;
    bool m_idle = true;
    float m_idleSince = 0;
    std::mutex m_mutex;              // held for the activation and for each change of the match rules
    std::unique_ptr<BusName> m_name; // null outside the loop

    ReusedStream m_input;  // of the call being handled
    ReusedStream m_output; // of the call being handled
};

} // namespace DAX::Common::DBUSWrapper
