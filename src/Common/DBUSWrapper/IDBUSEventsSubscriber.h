#pragma once

#include <string>

namespace DAX::Common::DBUSWrapper {

// What an adapter offers to its handler: to be told when one connection leaves the bus. Only for the adapter's thread.
class IDBUSEventsSubscriber {
public:
    // Replaces the earlier subscription. An empty name unsubscribes; a name that never called is logged and ignored.
    virtual void subscribeForConnectionCloseEvent(const std::string& connectionName) = 0;
    virtual void unsubscribeFromConnectionCloseEvent() = 0;
    virtual ~IDBUSEventsSubscriber() = default;
};

} // namespace DAX::Common::DBUSWrapper
