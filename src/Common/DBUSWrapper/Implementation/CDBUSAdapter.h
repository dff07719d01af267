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
#include <boost/thread/thread_only.hpp>
#include <dbus/dbus.h>

#include "Common/DBUSWrapper/IDBUSAdapter.h"
#include "Common/DBUSWrapper/IDBUSEventsSubscriber.h"
#include "Common/DBUSWrapper/Implementation/BusCalls.h"
#include "Common/DBUSWrapper/Implementation/BusClients.h"
#include "Common/DBUSWrapper/Implementation/BusName.h"
#include "Common/DBUSWrapper/Implementation/DBUSConnectionHandle.h"
#include "Common/DBUSWrapper/Implementation/Replies.h"
#include "Common/DBUSWrapper/Implementation/ReusedStream.h"
#include "Common/Utils/ISimpleClock.h"

namespace DAX::Common::DBUSWrapper {

class CDBUSAdapter final : public IDBUSAdapter, public IDBUSEventsSubscriber {
public:
    CDBUSAdapter(IDBUSWrapper::DBUSType type, const std::string& objectPath,
                 std::shared_ptr<IDBUSRequestsHandler> handler);
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

    // What the caller of activate(), who may give up, and the thread that it started have in common.
    struct Activation {
        boost::promise<bool> promise;
        boost::unique_future<bool> future = promise.get_future(); // for the caller
        std::atomic<Start> start{Start::CONNECTING};
    };

    struct ThreadParams {
        std::shared_ptr<Activation> activation; // empty on the path of listenDBUS
        IDBUSWrapper::DBUSType type;            // of the adapter, which may be gone while the thread still connects
        CDBUSAdapter* adapter;                  // not to be touched before begin() has given true
        std::string connectionName;

        // Claims the adapter for this thread; false when the activation has been given up.
        bool begin() const;
    };

    // The run of the adapter.
    static void threadMethod(const ThreadParams& params, unsigned int stopConditionIntervalInSeconds,
                             unsigned int idleTimeoutInSeconds, unsigned int pingIntervalInSeconds,
                             boost::optional<std::function<bool()>> stopCondition,
                             boost::optional<std::function<void()>> pingFunction);
    std::shared_ptr<Activation> startThread(unsigned int stopConditionIntervalInSeconds,
                                            const std::string& connectionName);
    void abandonThread(Activation& activation);
    void joinThread();
    void openConnection(DBUSConnectionHandle handle, const std::string& connectionName);
    void runToTheEnd(std::unique_ptr<Loop> loop);
    void closeConnection();
    void releaseConnection();
    void registerAdditionalName(const std::string& name, DBusConnection* connection) const;

    // The clients.
    void registerNewConnection(const char* name);
    void disconnectDeadClient(const std::string& name);
    std::unique_lock<std::mutex> waitForActivation();

    // The callbacks of libdbus, which let no exception out.
    static DBusHandlerResult handleMessage(DBusConnection* connection, DBusMessage* message, void* adapter);
    // The connection's filter: sees every message first.
    static DBusHandlerResult handleSignal(DBusConnection* connection, DBusMessage* message, void* adapter);
    void logFailure() const;

    DBusHandlerResult receiveMessage(DBusConnection* connection, DBusMessage* message);
    DBusHandlerResult handleMethodCall(const char* member, bool introspectable, DBusConnection* connection,
                                       DBusMessage* message);
    void handleRequest(const char* member, std::stringstream& input, DBusConnection* connection, DBusMessage* message);
    void sendReturnMessage(ReplyMessageType type, const std::string& function, const std::stringstream& data,
                           DBusMessage* message, DBusConnection* connection);
    DBUSMessageHandle makeReply(ReplyMessageType type, const std::string& function, const std::string& data,
                                DBusMessage* message);

    DBusHandlerResult handleSignalPrivate(DBusMessage* message);
    DBusHandlerResult handleNameOwnerChanged(DBusMessage* message);
    DBusHandlerResult handleNameAcquired(DBusMessage* message);

    // Which thread uses what. One thread at a time runs the loop, and whoever ends the adapter joins that thread first:
    // what the loop alone uses needs no lock.

    // Every thread: nothing changes between the constructor and the end of the destructor, which joins first.
    const std::string m_objectPath;
    std::shared_ptr<IDBUSRequestsHandler> m_handler;
    const IDBUSWrapper::DBUSType m_dbusType;
    const std::shared_ptr<Utils::ISimpleClock> m_clock;

    // Whoever calls activate(), deactivate() and the destructor, one at a time. Never the loop: it cannot join itself.
    std::unique_ptr<boost::thread> m_thread; // only after activate()

    // Both. activate() holds the lock until it knows how it ends, and the loop takes it for each change of the match
    // rules: the first client may come while activate() still waits, and then has to find the adapter active.
    std::mutex m_mutex;
    bool m_activated = false; // guarded by m_mutex, but in listenDBUS(), which sets it before it is the loop itself

    // The loop's thread, from ThreadParams::begin() to its end. The handler is called there, and so subscribes there.
    BusCalls m_busCalls;
    DBUSConnectionHandle m_dbusConnectionHandle; // null outside the loop
    std::unique_ptr<BusName> m_name;             // null outside the loop; borrows m_busCalls
    BusClients m_clients;
    boost::optional<std::string> m_closeEventConnection; // the client whose end the handler wants to hear of
    ReusedStream m_input;                                // of the call being handled
    ReusedStream m_output;                               // of the call being handled
    Replies m_replies;
};

} // namespace DAX::Common::DBUSWrapper
