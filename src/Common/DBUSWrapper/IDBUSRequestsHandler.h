#pragma once

#include <sstream>
#include <string>

namespace DAX::Common::DBUSWrapper {

class IDBUSEventsSubscriber;

// What stands behind an adapter's object. All calls come from the adapter's thread, one at a time.
class IDBUSRequestsHandler {
public:
    // One method call. `in` holds the parameter archive, `sender` the unique bus name of the caller. True: `out` holds
    // the result. False: `exceptionName` and `out` hold an exception. `in` and `out` are lent for the call alone. Never
    // throws. If the thread is interrupted meanwhile, the handler keeps that (KeptInterruption::keep); the adapter
    // sends the answer, then its loop ends.
    virtual bool handleRequest(const std::string& method, std::stringstream& in, std::stringstream& out,
                               std::string& exceptionName, const char* sender) = 0;

    // Writes the introspection document.
    virtual void introspect(std::stringstream& out) = 0;

    // The adapter gives itself, at its construction; it outlives every other call.
    virtual void useThisEventSubscriber(IDBUSEventsSubscriber& subscriber) = 0;

    // The subscribed connection has left the bus. Comes after all calls of that connection, also those that it left
    // behind. What this throws, the adapter logs and drops.
    virtual void clientDisconnected(const char* sender) = 0;
    virtual ~IDBUSRequestsHandler() = default;
};

} // namespace DAX::Common::DBUSWrapper
