#include "Common/DBUSWrapper/Implementation/CDBUSAdapter.h"

#include <utility>

#include <boost/assert.hpp>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Common/DBUSWrapper/IDBUSRequestsHandler.h"
#include "Common/DBUSWrapper/Implementation/CDBUSAdapterLoop.h"
#include "Common/DBUSWrapper/Implementation/DBUSResources.h"
#include "Common/Logging/LoggingStream.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/RethrowExceptionStream.h"

namespace DAX {
namespace Common {
namespace DBUSWrapper {

using namespace DBUSWrapperExceptions;

namespace {

const char NAME_OWNER_CHANGED_RULE[] = "sender=org.freedesktop.DBus,path=/org/freedesktop/DBus,"
                                       "interface=org.freedesktop.DBus,member=NameOwnerChanged,type=signal,arg0=";

} // namespace

CDBUSAdapter::CDBUSAdapter(IDBUSWrapper::DBUSType type, const std::string& objectPath,
                           std::shared_ptr<IDBUSRequestsHandler> handler, bool flag)
    : m_objectPath(objectPath)
    , m_handler(std::move(handler))
    , m_flag(flag)
    , m_dbusType(type)
    , m_clock(Utils::ISimpleClock::createClock()) {
    m_handler->useThisEventSubscriber(*this);
}

CDBUSAdapter::~CDBUSAdapter() {
    DAX_LOG(DBG) << "Calling deactivate() in CDBUSAdapter destructor.";
    try {
        deactivate();
    } catch (...) {
        DAX_LOG(DBG) << "Exception handled in CDBUSAdapter destructor.";
    }
    m_handler.reset();
}

void CDBUSAdapter::activate(int stopConditionIntervalInSeconds, const std::string& connectionName) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    DAX_LOG(INF) << "Activating DBUS adapter for object: {" << m_objectPath << "}";
    BOOST_ASSERT_MSG(m_activated == false, "Cannot reuse the same DBUS adapter.");
    const auto promise = std::make_shared<boost::promise<bool>>();
    boost::unique_future<bool> activated = promise->get_future();
    try {
        startThread(promise, static_cast<unsigned int>(stopConditionIntervalInSeconds), connectionName);
        m_activated = activated.get();
    } catch (const boost::thread_interrupted&) {
        DAX_LOG(INF) << "DBUSAdapter activate method interrupted. Adapter object:{" << m_objectPath << "}";
    }
}

void CDBUSAdapter::startThread(std::shared_ptr<boost::promise<bool>> promise,
                               unsigned int stopConditionIntervalInSeconds, const std::string& connectionName) {
    const ThreadParams params{std::move(promise), m_dbusType, this, m_objectPath, connectionName};
    try {
        m_thread = std::make_unique<boost::thread>([params, handler = m_handler, stopConditionIntervalInSeconds] {
            threadMethod(params, handler, stopConditionIntervalInSeconds, 0, 0, boost::none, boost::none);
        });
    } catch (const boost::thread_exception& exception) {
        DAX_LOG(INF) << "Error activating DBUS adapter for object: {" << m_objectPath << "}. Thread cannot be started.";
        DAX_THROW(DBUSWrapperException(), exception.what());
    }
}

void CDBUSAdapter::deactivate() {
    DAX_LOG(DBG) << "CDBUSAdapter::deactivate() called.";
    if (m_thread) {
        m_thread->interrupt();
        m_thread->join();
        m_thread.reset();
    }
}

void CDBUSAdapter::listenDBUS(unsigned int stopConditionIntervalInSeconds, unsigned int idleTimeoutInSeconds,
                              unsigned int pingIntervalInSeconds, boost::optional<std::function<bool()>> stopCondition,
                              boost::optional<std::function<void()>> pingFunction, const std::string& connectionName) {
    BOOST_ASSERT_MSG(m_activated == false, "Cannot reuse the same DBUS adapter.");
    m_activated = true;
    threadMethod({nullptr, m_dbusType, this, m_objectPath, connectionName}, m_handler, stopConditionIntervalInSeconds,
                 idleTimeoutInSeconds, pingIntervalInSeconds, std::move(stopCondition), std::move(pingFunction));
}

void CDBUSAdapter::threadMethod(ThreadParams params, std::shared_ptr<IDBUSRequestsHandler> /*handler*/,
                                unsigned int stopConditionIntervalInSeconds, unsigned int idleTimeoutInSeconds,
                                unsigned int pingIntervalInSeconds,
                                boost::optional<std::function<bool()>> stopCondition,
                                boost::optional<std::function<void()>> pingFunction) {
    BOOST_ASSERT_MSG(stopConditionIntervalInSeconds > 0, "stopConditionIntervalInSeconds must be greater than 0.");
    if (pingFunction) {
        BOOST_ASSERT_MSG(pingIntervalInSeconds >= stopConditionIntervalInSeconds,
                         "It is impossible to call pingFunction more often than every stopConditionIntervalInSeconds.");
    }
    CDBUSAdapter& adapter = *params.adapter;
    std::unique_ptr<Loop> loop;
    try {
        adapter.openConnection(params);
        loop = std::make_unique<Loop>(adapter, stopConditionIntervalInSeconds, idleTimeoutInSeconds,
                                      pingIntervalInSeconds, std::move(stopCondition), std::move(pingFunction));
    } catch (...) {
        adapter.m_dbusConnectionHandle.reset();
        if (params.promise) {
            params.promise->set_exception(boost::current_exception());
            return;
        }
        Utils::rethrowWithText([function = BOOST_CURRENT_FUNCTION](std::ostream& text) {
            text << function << " (" << __FILE__ << ":" << __LINE__ << ")";
        });
    }
    try {
        loop->run();
    } catch (const boost::thread_interrupted&) {
        DAX_LOG(INF) << "DBUSAdapter thread interrupted. Adapter object: {" << params.objectPath << "}";
    } catch (...) {
        DAX_LOG(INF) << "Unknown exception catched int DBUSAdapter thread. Adapter object:{" << params.objectPath
                     << "}";
    }
    loop.reset();
    adapter.closeConnection();
}

void CDBUSAdapter::openConnection(const ThreadParams& params) {
    m_dbusConnectionHandle = openPrivateConnection(params.type);
    DBusConnection* const connection = m_dbusConnectionHandle.get();
    dbus_connection_set_exit_on_disconnect(connection, false);
    DBusObjectPathVTable table{};
    table.message_function = handleMessage;
    dbus_connection_register_object_path(connection, params.objectPath.c_str(), &table, this);
    dbus_connection_add_filter(connection, handleSignal, this, nullptr);
    registerAdditionalName(params.connectionName, connection, params.objectPath);
    if (params.promise) {
        params.promise->set_value(true);
    }
    DAX_LOG(INF) << "DBUSAdapter adapter thread started. Adapter object:{" << params.objectPath << "}";
}

void CDBUSAdapter::closeConnection() {
    dbus_connection_unregister_object_path(m_dbusConnectionHandle.get(), m_objectPath.c_str());
    m_dbusConnectionHandle.reset();
    DAX_LOG(INF) << "DBUSAdapter thread method exit. Adapter object:{" << m_objectPath << "}";
}

void CDBUSAdapter::registerAdditionalName(const std::string& name, DBusConnection* connection,
                                          const std::string& objectPath) {
    DAX_LOG(INF) << "Registering new unique name on DBUS: {" << name << "} for connection:{"
                 << dbus_bus_get_unique_name(connection) << "}. Object path:" << objectPath;
    DBUSError error;
    const int result = dbus_bus_request_name(
        connection, name.c_str(), DBUS_NAME_FLAG_REPLACE_EXISTING | DBUS_NAME_FLAG_DO_NOT_QUEUE, error.get());
    if (error.isSet()) {
        DAX_LOG(FTL) << "Error Registering new unique name on DBUS: {" << name << "}";
        DAX_THROW(ERRORRegisteringObject(), error.message());
    }
    if (result != DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER) {
        DAX_LOG(ERR) << "Error Registering new unique name on DBUS: {" << name << "}. Name is already registered";
        DAX_THROW(ERRORRegisteringObject(), "Name is already registered");
    }
}

void CDBUSAdapter::subscribeForConnectionCloseEvent(const std::string& connectionName) {
    if (connectionName.empty()) {
        unsubscribeFromConnectionCloseEvent();
        return;
    }
    if (!isClient(connectionName)) {
        DAX_LOG(INF) << "Name " << connectionName << " does not exist in clients list.";
        return;
    }
    DAX_LOG(INF) << "Subscribed for connection " << connectionName << " close event.";
    m_closeEventConnection = connectionName;
}

void CDBUSAdapter::unsubscribeFromConnectionCloseEvent() {
    if (!m_closeEventConnection) {
        DAX_LOG(WRN) << "There is no peer connection name registered.";
        return;
    }
    DAX_LOG(INF) << "Unsubscribed for connection " << *m_closeEventConnection << " close event.";
    m_closeEventConnection = boost::none;
}

bool CDBUSAdapter::isClient(std::string_view name) const {
    return m_clientsByName.count(name) != 0;
}

void CDBUSAdapter::registerNewConnection(const char* name) {
    if (isClient(name)) {
        DAX_LOG(NONE) << "Name " << name << " is already registered in clients list.";
        return;
    }
    DAX_LOG(INF) << "Registering new connection named " << name;
    const auto client = m_clients.emplace(m_clients.end(), name);
    m_clientsByName.emplace(*client, client);
    subscribeForNameOwnerChangedSignal(*client);
    m_idle = false;
}

void CDBUSAdapter::unregisterConnection(const char* name) {
    const auto found = m_clientsByName.find(name);
    if (found == m_clientsByName.end()) {
        DAX_LOG(INF) << "Name " << name << " does not exist in clients list.";
        return;
    }
    DAX_LOG(INF) << "Unregistering connection named " << name;
    const auto client = found->second;
    m_clientsByName.erase(found);
    m_clients.erase(client);
    unsubscribeForNameOwnerChangedSignal(name);
    if (m_clients.empty()) {
        DAX_LOG(INF) << "We are now entering idle state.";
        m_idle = true;
        m_idleSince = m_clock->getCurrentTime();
    }
}

void CDBUSAdapter::subscribeForNameOwnerChangedSignal(const std::string& name) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    BOOST_ASSERT_MSG(m_activated == true && m_dbusConnectionHandle != nullptr, "Must be active.");
    if (!name.empty()) {
        dbus_bus_add_match(m_dbusConnectionHandle.get(), (NAME_OWNER_CHANGED_RULE + name).c_str(), nullptr);
    }
}

void CDBUSAdapter::unsubscribeForNameOwnerChangedSignal(const std::string& name) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    BOOST_ASSERT_MSG(m_activated == true && m_dbusConnectionHandle != nullptr, "Must be active.");
    if (!name.empty()) {
        dbus_bus_remove_match(m_dbusConnectionHandle.get(), (NAME_OWNER_CHANGED_RULE + name).c_str(), nullptr);
    }
}

} // namespace DBUSWrapper
} // namespace Common
} // namespace DAX
