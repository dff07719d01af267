#pragma once

#include <exception>

#include <boost/exception/exception.hpp>

namespace DAX::Common::DBUSWrapper::DBUSWrapperExceptions {

// Failures between this process and the bus. These exceptions never cross the bus; the message of libdbus is their
// streamed text.
class DBUSWrapperException : public virtual std::exception, public virtual boost::exception {};

class ErrorConnectingToDBUS : public DBUSWrapperException {};          // no bus connection could be made
class DBUSMemoryError : public ErrorConnectingToDBUS {};               // a message or a container could not be built
class ERRORRegisteringObject : public DBUSWrapperException {};         // no name, or a signal that cannot be read
class ERRORSendingReply : public DBUSWrapperException {};              // a reply could not be built or sent
class RemoteObjectActivationTimedOut : public DBUSWrapperException {}; // the bus gave up starting the remote side
class RemoteObjectNotAccessible : public DBUSWrapperException {};      // a call failed in any other way
class UnknownMethodException : public DBUSWrapperException {};         // the method is not in the adapter's table

} // namespace DAX::Common::DBUSWrapper::DBUSWrapperExceptions
