#pragma once

#include <functional>
#include <memory>
#include <string>

#include <boost/optional.hpp>

#include "Common/DBUSWrapper/IDBUSRequestsHandler.h"
#include "Common/DBUSWrapper/IDBUSWrapper.h"

namespace DAX::Common::DBUSWrapper {

// The server end: one object on the bus under a well-known name, with a connection and a loop of its own. Good for one
// run of the loop.
class IDBUSAdapter {
public:
    class IDBUSAdapterFactory {
    public:
        virtual ~IDBUSAdapterFactory() = default;

        // Shares the handler and gives it its events subscriber. `flag` has no effect.
        virtual std::unique_ptr<IDBUSAdapter> create(IDBUSWrapper::DBUSType type, const std::string& objectPath,
                                                     std::shared_ptr<IDBUSRequestsHandler> handler, bool flag) = 0;
    };

    // Runs the loop on a thread of its own and returns when the name is had. Throws what stood in the way, such as a
    // lack of memory or of threads. The interval is greater than 0. When the caller is interrupted, it returns without
    // a loop, and the adapter can be activated again.
    virtual void activate(int stopConditionIntervalInSeconds, const std::string& connectionName) = 0;

    // Ends the thread of `activate`, if there is one, and waits for it: an interruption of the caller has to wait too.
    // It fails on that thread itself, and so in the handler's calls.
    virtual void deactivate() = 0;

    // Runs the loop on the calling thread until the connection is closed, `stopCondition` gives true, the adapter has
    // been without clients for longer than `idleTimeoutInSeconds` (0: never), or the thread is interrupted. The stop
    // condition is asked at least every `stopConditionIntervalInSeconds` (greater than 0); `pingFunction` is called
    // no more often than every `pingIntervalInSeconds` (no less than the former). An end by idleness loses no call: the
    // name is given back first, and a new client that has called by then keeps the loop going. Throws what stood in the
    // way of the connection or of the name.
    virtual void listenDBUS(unsigned int stopConditionIntervalInSeconds, unsigned int idleTimeoutInSeconds,
                            unsigned int pingIntervalInSeconds, boost::optional<std::function<bool()>> stopCondition,
                            boost::optional<std::function<void()>> pingFunction, const std::string& connectionName) = 0;
    virtual ~IDBUSAdapter() = default;

    static std::shared_ptr<IDBUSAdapterFactory> createDefaultAdapterFactory();
};

} // namespace DAX::Common::DBUSWrapper
