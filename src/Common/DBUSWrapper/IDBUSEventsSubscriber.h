#pragma once

#include <string>

namespace DAX::Common::DBUSWrapper {

// What an adapter offers to its handler: news of one connection that leaves the bus. It belongs to the adapter and
// lives as long as that. Only for the adapter's thread.
class IDBUSEventsSubscriber {
public:
    // Asks for IDBUSRequestsHandler::clientDisconnected() when the connection with this unique bus name ends. Replaces
    // an earlier subscription. An empty name unsubscribes; a name that has never called the adapter is logged and
    // ignored.
    virtual void subscribeForConnectionCloseEvent(const std::string& connectionName) = 0;

    // Ends the subscription. Without one, it only logs a warning.
    virtual void unsubscribeFromConnectionCloseEvent() = 0;
    virtual ~IDBUSEventsSubscriber() = default;
};

} // namespace DAX::Common::DBUSWrapper
