#pragma once

#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <string_view>
#include <unordered_map>

#include <boost/optional.hpp>
#include <boost/thread/future.hpp>
#include <boost/thread/thread.hpp>
#include <dbus/dbus.h>

#include "Common/DBUSWrapper/IDBUSAdapter.h"
#include "Common/DBUSWrapper/IDBUSEventsSubscriber.h"
#include "Common/DBUSWrapper/Implementation/DBUSConnectionHandle.h"
#include "Common/DBUSWrapper/Implementation/ReusedStream.h"
#include "Common/Utils/ISimpleClock.h"

namespace DAX {
namespace Common {
namespace DBUSWrapper {

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

    struct ThreadParams {
        std::shared_ptr<boost::promise<bool>> promise; // empty on the path of listenDBUS
        IDBUSWrapper::DBUSType type;
        CDBUSAdapter* adapter;
        std::string objectPath;
        std::string connectionName;
    };

    // The run of the adapter.
    static void threadMethod(ThreadParams params, std::shared_ptr<IDBUSRequestsHandler> handler,
                             unsigned int stopConditionIntervalInSeconds, unsigned int idleTimeoutInSeconds,
                             unsigned int pingIntervalInSeconds, boost::optional<std::function<bool()>> stopCondition,
                             boost::optional<std::function<void()>> pingFunction);
    void startThread(std::shared_ptr<boost::promise<bool>> promise, unsigned int stopConditionIntervalInSeconds,
                     const std::string& connectionName);
    void openConnection(const ThreadParams& params);
    void closeConnection();
    static void registerAdditionalName(const std::string& name, DBusConnection* connection,
                                       const std::string& objectPath);

    // The clients.
    void registerNewConnection(const char* name);
    void unregisterConnection(const char* name);
    bool isClient(std::string_view name) const;
    void subscribeForNameOwnerChangedSignal(const std::string& name);
    void unsubscribeForNameOwnerChangedSignal(const std::string& name);

    // The callbacks of libdbus, which let no exception out.
    static DBusHandlerResult handleMessage(DBusConnection* connection, DBusMessage* message, void* adapter);
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
    void disconnectDeadClient(const char* name);

    std::string m_objectPath;
    std::shared_ptr<IDBUSRequestsHandler> m_handler;
    [[maybe_unused]] bool m_flag;
    boost::optional<std::string> m_closeEventConnection;
    std::list<std::string> m_clients; // in the order of their first calls
    std::unique_ptr<boost::thread> m_thread;
    bool m_activated = false;
    IDBUSWrapper::DBUSType m_dbusType;
    DBUSConnectionHandle m_dbusConnectionHandle; // null outside the loop
    std::shared_ptr<Utils::ISimpleClock> m_clock;
    bool m_idle = true;
    float m_idleSince = 0;
    std::mutex m_mutex; // held for the activation and for each change of the match rules

    std::unordered_map<std::string_view, std::list<std::string>::iterator> m_clientsByName; // into m_clients

    ReusedStream m_input;  // of the call being handled
    ReusedStream m_output; // of the call being handled
};

} // namespace DBUSWrapper
} // namespace Common
} // namespace DAX
