#pragma once

#include <sstream>
#include <string>

namespace DAX::Common::DBUSWrapper {

class IDBUSEventsSubscriber;

// The object behind an adapter. The adapter shares it; all calls come from the adapter's thread, one at a time, except
// useThisEventSubscriber().
class IDBUSRequestsHandler {
public:
    // Handles one method call. `in` holds the parameter archive; `sender` is the unique bus name of the caller, never
    // null, but empty when the message has none. Returns true with the result in `out`, or false with an exception in
    // `exceptionName` and `out`. All arguments are borrowed for the call.
    //
    // A failure belongs in the answer; do not throw it. If the handler throws a DBUSWrapperException all the same, the
    // adapter logs it and the caller gets an error of the bus library. Any other exception, even for lack of memory,
    // ends the process with an assertion. If the thread is interrupted, the handler keeps the interruption
    // (KeptInterruption::keep): the adapter sends the answer, then its loop ends.
    virtual bool handleRequest(const std::string& method, std::stringstream& in, std::stringstream& out,
                               std::string& exceptionName, const char* sender) = 0;

    // Writes the introspection document of the object, as XML in UTF-8. Exceptions end as in handleRequest().
    virtual void introspect(std::stringstream& out) = 0;

    // Comes once, from the adapter's constructor and on its thread, before every other call. The subscriber belongs to
    // the adapter; do not use it after the adapter's last call. What this throws leaves the constructor.
    virtual void useThisEventSubscriber(IDBUSEventsSubscriber& subscriber) = 0;

    // The subscribed connection has left the bus. Comes after all calls of that connection, also those that were still
    // waiting when it left. An exception is logged and dropped, but the connection then counts as a client for ever, so
    // that the adapter never becomes idle again.
    virtual void clientDisconnected(const char* sender) = 0;
    virtual ~IDBUSRequestsHandler() = default;
};

} // namespace DAX::Common::DBUSWrapper
