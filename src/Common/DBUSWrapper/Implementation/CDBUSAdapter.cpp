#include "Common/DBUSWrapper/Implementation/CDBUSAdapter.h"

#include <algorithm>
#include <exception>
#include <utility>

#include <boost/assert.hpp>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Common/DBUSWrapper/IDBUSRequestsHandler.h"
#include "Common/DBUSWrapper/Implementation/CDBUSAdapterLoop.h"
#include "Common/DBUSWrapper/Implementation/DBUSResources.h"
#include "Common/DBUSWrapper/Implementation/PeerCalls.h"
#include "Common/Logging/LoggingStream.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/RethrowExceptionStream.h"

namespace DAX::Common::DBUSWrapper {

using namespace DBUSWrapperExceptions;

CDBUSAdapter::CDBUSAdapter(IDBUSWrapper::DBUSType type, const std::string& objectPath,
                           std::shared_ptr<IDBUSRequestsHandler> handler)
    : m_objectPath(objectPath)
    , m_handler(std::move(handler))
    , m_dbusType(type)
    , m_clock(Utils::ISimpleClock::createClock())
    , m_clients(m_busCalls, *m_clock, [this](const std::string& name) { disconnectDeadClient(name); }) {
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

// A negative interval is refused like 0.
void CDBUSAdapter::activate(int stopConditionIntervalInSeconds, const std::string& connectionName) {
    std::unique_lock<std::mutex> lock(m_mutex);
    DAX_LOG(INF) << "Activating DBUS adapter for object: {" << m_objectPath << "}";
    BOOST_ASSERT_MSG(m_activated == false, "Cannot reuse the same DBUS adapter.");
    const std::shared_ptr<Activation> activation =
        startThread(static_cast<unsigned int>(std::max(stopConditionIntervalInSeconds, 0)), connectionName);
    try {
        m_activated = activation->future.get();
    } catch (const boost::thread_interrupted&) {
        DAX_LOG(INF) << "DBUSAdapter activate method interrupted. Adapter object:{" << m_objectPath << "}";
        m_activated = true; // as long as the thread runs, which may have met its first client by now
        lock.unlock();
        abandonThread(*activation);
        lock.lock();
        m_activated = false;
    } catch (...) {
        joinThread();
        throw;
    }
}

std::shared_ptr<CDBUSAdapter::Activation> CDBUSAdapter::startThread(unsigned int stopConditionIntervalInSeconds,
                                                                    const std::string& connectionName) {
    try {
        auto activation = std::make_shared<Activation>();
        const ThreadParams params{activation, m_dbusType, this, connectionName};
        m_thread = std::make_unique<boost::thread>([params, stopConditionIntervalInSeconds] {
            threadMethod(params, stopConditionIntervalInSeconds, 0, 0, boost::none, boost::none);
        });
        return activation;
    } catch (const std::exception& exception) {
        DAX_LOG(INF) << "Error activating DBUS adapter for object: {" << m_objectPath << "}. Thread cannot be started.";
        DAX_THROW(DBUSWrapperException(), exception.what());
    }
}

// A thread that still waits for its connection is left alone: it ends by itself and does not come back to the adapter.
void CDBUSAdapter::abandonThread(Activation& activation) {
    Start expected = Start::CONNECTING;
    if (activation.start.compare_exchange_strong(expected, Start::GIVEN_UP)) {
        m_thread->detach();
        m_thread.reset();
    } else {
        joinThread();
    }
}

bool CDBUSAdapter::ThreadParams::begin() const {
    Start expected = Start::CONNECTING;
    return activation == nullptr || activation->start.compare_exchange_strong(expected, Start::BEGUN) ||
           expected == Start::BEGUN;
}

void CDBUSAdapter::deactivate() {
    DAX_LOG(DBG) << "CDBUSAdapter::deactivate() called.";
    joinThread();
}

// The thread uses this object to its end: an interruption of the caller waits until then.
void CDBUSAdapter::joinThread() {
    if (m_thread) {
        const boost::this_thread::disable_interruption uninterrupted;
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
    threadMethod({nullptr, m_dbusType, this, connectionName}, stopConditionIntervalInSeconds, idleTimeoutInSeconds,
                 pingIntervalInSeconds, std::move(stopCondition), std::move(pingFunction));
}

void CDBUSAdapter::threadMethod(const ThreadParams& params, unsigned int stopConditionIntervalInSeconds,
                                unsigned int idleTimeoutInSeconds, unsigned int pingIntervalInSeconds,
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
        DBUSConnectionHandle connection = openPrivateConnection(params.type);
        if (!params.begin()) {
            return;
        }
        adapter.openConnection(std::move(connection), params.connectionName);
        loop = std::make_unique<Loop>(adapter, stopConditionIntervalInSeconds, idleTimeoutInSeconds,
                                      pingIntervalInSeconds, std::move(stopCondition), std::move(pingFunction));
        if (params.activation) {
            params.activation->promise.set_value(true);
        }
    } catch (...) {
        if (params.begin()) {
            adapter.releaseConnection();
        }
        if (params.activation) {
            params.activation->promise.set_exception(boost::current_exception());
            return;
        }
        Utils::rethrowWithText([function = BOOST_CURRENT_FUNCTION](std::ostream& text) {
            text << function << " (" << __FILE__ << ":" << __LINE__ << ")";
        });
    }
    adapter.runToTheEnd(std::move(loop));
}

void CDBUSAdapter::openConnection(DBUSConnectionHandle handle, const std::string& connectionName) {
    DBusConnection* const connection = handle.get();
    m_busCalls.clear();
    dbus_connection_set_exit_on_disconnect(connection, false);
    takePeerCalls(connection);
    DBusObjectPathVTable table{};
    table.message_function = handleMessage;
    dbus_connection_register_object_path(connection, m_objectPath.c_str(), &table, this);
    dbus_connection_add_filter(connection, handleSignal, this, nullptr);
    m_clients.begin(connection);
    registerAdditionalName(connectionName, connection);
    m_name = std::make_unique<BusName>(m_busCalls, connection, connectionName);
    m_dbusConnectionHandle = std::move(handle);
    DAX_LOG(INF) << "DBUSAdapter adapter thread started. Adapter object:{" << m_objectPath << "}";
}

void CDBUSAdapter::runToTheEnd(std::unique_ptr<Loop> loop) {
    try {
        loop->run();
    } catch (const boost::thread_interrupted&) {
        DAX_LOG(INF) << "DBUSAdapter thread interrupted. Adapter object: {" << m_objectPath << "}";
    } catch (...) {
        DAX_LOG(INF) << "Unknown exception catched int DBUSAdapter thread. Adapter object:{" << m_objectPath << "}";
    }
    loop.reset();
    closeConnection();
}

void CDBUSAdapter::closeConnection() {
    dbus_connection_unregister_object_path(m_dbusConnectionHandle.get(), m_objectPath.c_str());
    releaseConnection();
    DAX_LOG(INF) << "DBUSAdapter thread method exit. Adapter object:{" << m_objectPath << "}";
}

void CDBUSAdapter::releaseConnection() {
    m_name.reset();
    m_dbusConnectionHandle.reset();
}

void CDBUSAdapter::registerAdditionalName(const std::string& name, DBusConnection* connection) const {
    DAX_LOG(INF) << "Registering new unique name on DBUS: {" << name << "} for connection:{"
                 << dbus_bus_get_unique_name(connection) << "}. Object path:" << m_objectPath;
    DBUSError error;
    const int result = dbus_bus_request_name(connection, name.c_str(), BUS_NAME_FLAGS, error.get());
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
    if (!m_clients.contains(connectionName)) {
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

void CDBUSAdapter::registerNewConnection(const char* name) {
    if (m_clients.add(name)) {
        m_name->keep();
        const auto lock = waitForActivation();
        m_clients.subscribeForNameOwnerChangedSignal(name);
    }
}

std::unique_lock<std::mutex> CDBUSAdapter::waitForActivation() {
    std::unique_lock<std::mutex> lock(m_mutex);
    BOOST_ASSERT_MSG(m_activated == true && m_dbusConnectionHandle != nullptr, "Must be active.");
    return lock;
}

} // namespace DAX::Common::DBUSWrapper
