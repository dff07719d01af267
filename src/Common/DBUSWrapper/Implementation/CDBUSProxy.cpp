#include "Common/DBUSWrapper/Implementation/CDBUSProxy.h"

#include <chrono>
#include <mutex>
#include <random>

#include <boost/assert.hpp>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Common/DBUSWrapper/Implementation/ByteArrays.h"
#include "Common/DBUSWrapper/Implementation/ClientBus.h"
#include "Common/Logging/LoggingStream.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Common::DBUSWrapper {

using namespace DBUSWrapperExceptions;

namespace {

const unsigned int DEFAULT_CALL_TIMEOUT_MS = 60000;

int nextProxyId() {
    static std::mutex mutex;
    static std::mt19937 generator; // default seed on purpose: every run has the same ids
    const std::lock_guard<std::mutex> lock(mutex);
    return std::uniform_int_distribution<int>(0, 100000)(generator);
}

std::string_view readReplyArray(DBusMessageIter& argument) {
    const boost::optional<std::string_view> bytes = readByteArray(argument);
    if (!bytes) {
        DAX_THROW(RemoteObjectNotAccessible(), "The reply is not made of byte arrays.");
    }
    return *bytes;
}

// Checks the whole reply before it changes `output` and `function`.
bool readReply(DBusMessage& reply, std::stringstream& output, std::string& function) {
    DBusMessageIter argument;
    if (!dbus_message_iter_init(&reply, &argument)) {
        return true;
    }
    const std::string_view type = readReplyArray(argument);
    dbus_message_iter_next(&argument);
    const std::string_view name = readReplyArray(argument);
    std::string_view result;
    if (dbus_message_iter_next(&argument)) {
        result = readReplyArray(argument);
    }
    function.assign(name);
    output.write(result.data(), static_cast<std::streamsize>(result.size()));
    return type != REPLY_MESSAGE_TYPE_EXCEPTION_STRING;
}

} // namespace

CDBUSProxy::CDBUSProxy(const std::string& objectPath, const std::string& interfaceName, IDBUSWrapper::DBUSType type,
                       boost::optional<unsigned int> activationTimeoutMs, boost::optional<unsigned int> callTimeoutMs)
    : m_objectPath(objectPath)
    , m_interfaceName(interfaceName)
    , m_dbusType(type)
    , m_activationTimeoutMs(activationTimeoutMs)
    , m_callTimeoutMs(callTimeoutMs)
    , m_id(nextProxyId()) {
    m_dbusConnectionHandle = openPrivateConnection(m_dbusType);
    prepareConnection();
}

CDBUSProxy::CDBUSProxy(const std::string& objectPath, const std::string& interfaceName,
                       const ClientConnection& connection)
    : m_objectPath(objectPath)
    , m_interfaceName(interfaceName)
    , m_dbusConnectionHandle(openClientConnection(connection))
    , m_dbusType(IDBUSWrapper::SYSTEM)
    , m_callTimeoutMs(connection.timeoutMs)
    , m_id(nextProxyId())
    , m_tellsBusErrors(true)
    , m_mayStart(connection.mayStart) {
    prepareConnection();
}

void CDBUSProxy::prepareConnection() {
    DAX_LOG(INF) << "New DBUSProxy for object: " << m_objectPath << ", interface: " << m_interfaceName
                 << ". Created connection: " << dbus_bus_get_unique_name(m_dbusConnectionHandle.get());
    dbus_connection_set_exit_on_disconnect(m_dbusConnectionHandle.get(), false);
    m_channel = std::make_unique<CallChannel>(*m_dbusConnectionHandle);
}

std::string CDBUSProxy::getProxyUniqueId() {
    return "Proxy-" + std::to_string(m_id);
}

std::string CDBUSProxy::getDBUSDebugConnectionId() {
    return dbus_bus_get_unique_name(m_dbusConnectionHandle.get());
}

void CDBUSProxy::init(const std::string& connectionName) {
    m_connectionName = connectionName;
    waitForAdapter();
}

// There is nothing to wait for: the bus starts the remote side at the first call.
void CDBUSProxy::waitForAdapter() {
    DAX_LOG(INF) << "skip waiting dbus in case of dbus-activation.";
}

bool CDBUSProxy::call(const std::string& method, const std::stringstream& parameters, std::stringstream& output,
                      std::string& function) {
    BOOST_ASSERT_MSG(m_dbusConnectionHandle != nullptr, "CDBUS Proxy must be initialized first.");
    const DBUSMessageHandle message = createCall(method, parameters.str());
    const DBUSMessageHandle reply = sendAndWait(*message);
    return readReply(*reply, output, function);
}

DBUSMessageHandle CDBUSProxy::createCall(const std::string& method, const std::string& parameters) const {
    throwIfNotCallable(method);
    DBUSMessageHandle message(dbus_message_new_method_call(m_connectionName.c_str(), m_objectPath.c_str(),
                                                           m_interfaceName.c_str(), method.c_str()));
    if (message == nullptr) {
        DAX_THROW(DBUSMemoryError(), "A message cannot be made.");
    }
    if (m_mayStart && !m_mayStart()) {
        dbus_message_set_auto_start(message.get(), false);
    }
    if (!parameters.empty()) {
        DBusMessageIter arguments;
        dbus_message_iter_init_append(message.get(), &arguments);
        appendByteArray(arguments, parameters);
    }
    return message;
}

// libdbus ends the process if a message is made with an invalid name, and some of the names come from the wire.
void CDBUSProxy::throwIfNotCallable(const std::string& method) const {
    DBUSError error;
    if (!dbus_validate_bus_name(m_connectionName.c_str(), error.get()) ||
        !dbus_validate_path(m_objectPath.c_str(), error.get()) ||
        !dbus_validate_interface(m_interfaceName.c_str(), error.get()) ||
        !dbus_validate_member(method.c_str(), error.get())) {
        DAX_THROW(RemoteObjectNotAccessible(), "A name of the call is not valid: " << error.message());
    }
}

template <class Exception>
void CDBUSProxy::throwError(Exception exception, const DBUSError& error) const {
    if (m_tellsBusErrors) {
        exception << errinfo_bus_error(error.name());
    }
    exception << error.message();
    exception.throwException();
}

DBUSMessageHandle CDBUSProxy::sendAndWait(DBusMessage& message) const {
    const std::chrono::milliseconds timeout(m_callTimeoutMs.value_or(DEFAULT_CALL_TIMEOUT_MS));
    DBUSError error;
    DBUSMessageHandle reply = m_channel->call(message, timeout, error);
    if (reply != nullptr) {
        return reply;
    }
    if (!error.isSet()) {
        DAX_THROW(DBUSMemoryError(), "There is no memory for sending the call.");
    }
    if (error.hasName(DBUS_ERROR_TIMED_OUT)) {
        throwError(DAX_EXCEPTION(RemoteObjectActivationTimedOut()), error);
    }
    throwError(DAX_EXCEPTION(RemoteObjectNotAccessible()), error);
}

} // namespace DAX::Common::DBUSWrapper
