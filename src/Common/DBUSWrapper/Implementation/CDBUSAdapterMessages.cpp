#include <boost/assert.hpp>
#include <boost/exception/diagnostic_information.hpp>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Common/DBUSWrapper/IDBUSRequestsHandler.h"
#include "Common/DBUSWrapper/Implementation/ByteArrays.h"
#include "Common/DBUSWrapper/Implementation/CDBUSAdapter.h"
#include "Common/DBUSWrapper/Implementation/DBUSResources.h"
#include "Common/DBUSWrapper/Implementation/PeerCalls.h"
#include "Common/Logging/LoggingStream.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/KeptInterruption.h"

// What comes in over the connection of an adapter, and what goes out.

namespace DAX::Common::DBUSWrapper {

using namespace DBUSWrapperExceptions;

namespace {

std::string diagnostics() {
    return boost::current_exception_diagnostic_information(true);
}

// A message that is no method call may come without a member, one of a broken bus without a sender.
const char* orEmpty(const char* text) {
    return text != nullptr ? text : "";
}

// One line for every signal of the bus that cannot be read, whichever it is.
[[noreturn]] void throwUnreadable(const DBUSError& error) {
    DAX_LOG(INF) << "NameOwnerChanged error: " << error.message();
    DAX_THROW(ERRORRegisteringObject(), error.message());
}

} // namespace

DBusHandlerResult CDBUSAdapter::handleMessage(DBusConnection* connection, DBusMessage* message, void* adapter) {
    auto& self = *static_cast<CDBUSAdapter*>(adapter);
    try {
        return self.receiveMessage(connection, message);
    } catch (const ERRORSendingReply&) {
        DAX_LOG(ERR) << "Error sending reply message in adapter object: " << self.m_objectPath
                     << ". Exception: " << diagnostics();
    } catch (...) {
        self.logFailure();
    }
    // A call that is not handled gets an error of libdbus's own, whether its sender wants an answer or not.
    return wantsReply(message) ? DBUS_HANDLER_RESULT_NOT_YET_HANDLED : DBUS_HANDLER_RESULT_HANDLED;
}

DBusHandlerResult CDBUSAdapter::handleSignal(DBusConnection* connection, DBusMessage* message, void* adapter) {
    auto& self = *static_cast<CDBUSAdapter*>(adapter);
    try {
        return answerPeerCall(connection, message) ? DBUS_HANDLER_RESULT_HANDLED : self.handleSignalPrivate(message);
    } catch (...) {
        self.logFailure();
    }
    return DBUS_HANDLER_RESULT_HANDLED;
}

void CDBUSAdapter::logFailure() const {
    try {
        throw;
    } catch (const DBUSWrapperException&) {
        DAX_LOG(ERR) << "DBUS error while handling message in adapter object: " << m_objectPath
                     << ". Exception: " << diagnostics();
    } catch (...) {
        DAX_LOG(FTL) << "Unknown error while handling message in adapter object: " << m_objectPath
                     << ". Exception: " << diagnostics();
        BOOST_ASSERT(false);
    }
}

DBusHandlerResult CDBUSAdapter::receiveMessage(DBusConnection* connection, DBusMessage* message) {
    const char* const member = orEmpty(dbus_message_get_member(message));
    DAX_LOG(VERBOSE) << "Message {" << member << "} for adapter object:{" << m_objectPath << "} received";
    const bool introspectable = dbus_message_is_method_call(message, DBUS_INTERFACE_INTROSPECTABLE, member) != 0;
    if (!introspectable) {
        registerNewConnection(orEmpty(dbus_message_get_sender(message)));
    }
    const DBusHandlerResult result = handleMethodCall(member, introspectable, connection, message);
    DAX_LOG(VERBOSE) << "Message {" << member << "} for adapter object:{" << m_objectPath << "} handled";
    return result;
}

DBusHandlerResult CDBUSAdapter::handleMethodCall(const char* member, bool introspectable, DBusConnection* connection,
                                                 DBusMessage* message) {
    ReusedStream::Loan input(m_input);
    DBusMessageIter argument;
    if (dbus_message_iter_init(message, &argument)) {
        const boost::optional<std::string_view> bytes = readByteArray(argument);
        if (!bytes) {
            sendReturnMessage(EXCEPTION, "Invalid arguments.", std::stringstream("Nothing to add."), message,
                              connection);
            return wantsReply(message) ? DBUS_HANDLER_RESULT_NOT_YET_HANDLED : DBUS_HANDLER_RESULT_HANDLED;
        }
        input.stream().write(bytes->data(), static_cast<std::streamsize>(bytes->size()));
    }
    if (introspectable && std::string_view(member) == "Introspect") {
        std::stringstream document;
        m_handler->introspect(document);
        sendReturnMessage(INTROSPECTION, member, document, message, connection);
        return DBUS_HANDLER_RESULT_HANDLED;
    }
    handleRequest(member, input.stream(), connection, message);
    return DBUS_HANDLER_RESULT_HANDLED;
}

void CDBUSAdapter::handleRequest(const char* member, std::stringstream& input, DBusConnection* connection,
                                 DBusMessage* message) {
    ReusedStream::Loan output(m_output);
    std::string exceptionName;
    if (m_handler->handleRequest(member, input, output.stream(), exceptionName,
                                 orEmpty(dbus_message_get_sender(message)))) {
        sendReturnMessage(REPLY, member, output.stream(), message, connection);
    } else {
        sendReturnMessage(EXCEPTION, exceptionName, output.stream(), message, connection);
    }
}

// Not flushed: libdbus writes what the socket takes at once, and the rest at the next wait of the loop.
void CDBUSAdapter::sendReturnMessage(ReplyMessageType type, const std::string& function, const std::stringstream& data,
                                     DBusMessage* message, DBusConnection* connection) {
    if (!wantsReply(message)) {
        return;
    }
    const DBUSMessageHandle reply = makeReply(type, function, data.str(), message);
    dbus_uint32_t serial = 0;
    if (!dbus_connection_send(connection, reply.get(), &serial)) {
        DAX_THROW(ERRORSendingReply(), "A reply cannot be sent.");
    }
}

DBUSMessageHandle CDBUSAdapter::makeReply(ReplyMessageType type, const std::string& function, const std::string& data,
                                          DBusMessage* message) {
    switch (type) {
    case REPLY:
        return m_replies.make(message, REPLY_MESSAGE_TYPE_REPLY_STRING, function, data);
    case EXCEPTION:
        return m_replies.make(message, REPLY_MESSAGE_TYPE_EXCEPTION_STRING, function, data);
    case INTROSPECTION:
        return textReply(message, data);
    default:
        BOOST_ASSERT(false);
        return nullptr;
    }
}

DBusHandlerResult CDBUSAdapter::handleSignalPrivate(DBusMessage* message) {
    const int type = dbus_message_get_type(message);
    if (type == DBUS_MESSAGE_TYPE_METHOD_RETURN || type == DBUS_MESSAGE_TYPE_ERROR) {
        return m_busCalls.receive(message) ? DBUS_HANDLER_RESULT_HANDLED : DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
    }
    if (type != DBUS_MESSAGE_TYPE_SIGNAL) {
        // A call of an object that does not exist gets libdbus's error, whether its sender wants an answer or not.
        return wantsReply(message) || dbus_message_has_path(message, m_objectPath.c_str())
                   ? DBUS_HANDLER_RESULT_NOT_YET_HANDLED
                   : DBUS_HANDLER_RESULT_HANDLED;
    }
    const std::string_view member = orEmpty(dbus_message_get_member(message));
    if (member == "NameOwnerChanged") {
        return handleNameOwnerChanged(message);
    }
    if (member == "NameAcquired") {
        return handleNameAcquired(message);
    }
    return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
}

DBusHandlerResult CDBUSAdapter::handleNameOwnerChanged(DBusMessage* message) {
    if (m_clients.isEmpty()) {
        return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
    }
    const bool isOfTheBus = dbus_message_has_sender(message, DBUS_SERVICE_DBUS);
    const char* name = nullptr;
    const char* oldOwner = nullptr;
    const char* newOwner = nullptr;
    DBUSError error;
    dbus_message_get_args(message, error.get(), DBUS_TYPE_STRING, &name, DBUS_TYPE_STRING, &oldOwner, DBUS_TYPE_STRING,
                          &newOwner, DBUS_TYPE_INVALID);
    if (error.isSet()) {
        throwUnreadable(error);
    }
    if (isOfTheBus && !m_clients.contains(name)) {
        return DBUS_HANDLER_RESULT_NOT_YET_HANDLED; // every name that vanishes from the bus comes by here
    }
    DAX_LOG(INF) << "DBUSAdapter - NameOwnerChanged signal received from connection:{"
                 << orEmpty(dbus_message_get_sender(message)) << "}. Adapter object path:{" << m_objectPath << "}";
    DAX_LOG(INF) << "NameOwnerChanged args: objectName='" << name << "', oldOwner='" << oldOwner << "', newOwner='"
                 << newOwner << "'";
    // The pointers, not the texts: they differ in every signal that can be read, so that each one about a client counts
    // as its death. It is a unique name, which can only vanish, and the bus alone knows of that.
    if (!isOfTheBus || newOwner == name) {
        DAX_LOG(INF) << "  -- Ignoring NameOwnerChanged signal.";
        return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
    }
    disconnectDeadClient(name);
    return DBUS_HANDLER_RESULT_HANDLED;
}

// When the handler throws, the client stays in the list and the adapter does not become idle.
void CDBUSAdapter::disconnectDeadClient(const std::string& name) {
    DAX_LOG(INF) << "Disconnecting dead client: '" << name << "'";
    m_clients.dropQuestion(name);
    try {
        if (m_closeEventConnection && *m_closeEventConnection == name) {
            m_handler->clientDisconnected(name.c_str());
        }
        const auto lock = waitForActivation();
        m_clients.unregisterConnection(name);
    } catch (const DBUSWrapperException&) {
        DAX_LOG(ERR) << "DBUSWrapperException while calling clientDisconnected() in adapter object: " << m_objectPath
                     << " - ignoring. Exception: " << diagnostics();
    } catch (...) {
        Utils::KeptInterruption::keep();
        DAX_LOG(FTL) << "Unknown error while calling clientDisconnected() in adapter object: " << m_objectPath
                     << " - ignoring. Exception: " << diagnostics();
    }
}

DBusHandlerResult CDBUSAdapter::handleNameAcquired(DBusMessage* message) {
    const char* name = nullptr;
    DBUSError error;
    dbus_message_get_args(message, error.get(), DBUS_TYPE_STRING, &name, DBUS_TYPE_INVALID);
    if (error.isSet()) {
        throwUnreadable(error);
    }
    DAX_LOG(INF) << "DBUSAdapter - NameAcquired signal received from connection:{"
                 << orEmpty(dbus_message_get_sender(message)) << "}. Adapter object path:{" << m_objectPath << "}";
    DAX_LOG(INF) << "NameAcquired args: name='" << name << "'";
    return DBUS_HANDLER_RESULT_HANDLED;
}

} // namespace DAX::Common::DBUSWrapper
