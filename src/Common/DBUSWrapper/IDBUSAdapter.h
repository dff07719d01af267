#pragma once

#include <functional>
#include <memory>
#include <string>

#include <boost/optional.hpp>

#include "Common/DBUSWrapper/IDBUSRequestsHandler.h"
#include "Common/DBUSWrapper/IDBUSWrapper.h"

namespace DAX::Common::DBUSWrapper {

// The server end: one object on the bus under a well-known name, with a connection and a loop of its own. Good for one
// run of the loop; a second run is an assertion failure. Its operations are not for several threads at once; the
// handler is called on the thread of the loop.
class IDBUSAdapter {
public:
    // Makes adapters. Any thread.
    class IDBUSAdapterFactory {
    public:
        virtual ~IDBUSAdapterFactory() = default;

        // Shares the handler, and gives it its events subscriber. Does not connect yet. Throws what the handler throws.
        // `flag` has no effect.
        virtual std::unique_ptr<IDBUSAdapter> create(IDBUSWrapper::DBUSType type, const std::string& objectPath,
                                                     std::shared_ptr<IDBUSRequestsHandler> handler, bool flag) = 0;
    };

    // Runs the loop on a thread of its own, without an idle time-out, and returns when that thread owns the name.
    // `stopConditionIntervalInSeconds` must be greater than 0 (an assertion). Throws what prevented the start, such as
    // ErrorConnectingToDBUS, ERRORRegisteringObject, or DBUSWrapperException without memory or threads; the adapter can
    // then be activated again. So it can when the caller is interrupted: it then returns without a loop.
    virtual void activate(int stopConditionIntervalInSeconds, const std::string& connectionName) = 0;

    // Ends the thread of activate(), if there is one, and waits for it. An interruption of the caller is delayed until
    // then. On the loop's own thread, as in the handler's calls, it throws boost::thread_resource_error.
    virtual void deactivate() = 0;

    // Runs the loop on the calling thread until the connection is closed, `stopCondition` returns true, the adapter has
    // been without clients for longer than `idleTimeoutInSeconds` (0: never), or the thread is interrupted. The loop
    // calls `stopCondition` at least every `stopConditionIntervalInSeconds` (greater than 0, else an assertion
    // failure), and `pingFunction` at most every `pingIntervalInSeconds` (not less than the other interval, else an
    // assertion failure). An end by idleness loses no call: the loop gives the name back first, and goes on when a new
    // client has called by then. Throws what prevented the start, such as ErrorConnectingToDBUS without a connection
    // and ERRORRegisteringObject without the name.
    virtual void listenDBUS(unsigned int stopConditionIntervalInSeconds, unsigned int idleTimeoutInSeconds,
                            unsigned int pingIntervalInSeconds, boost::optional<std::function<bool()>> stopCondition,
                            boost::optional<std::function<void()>> pingFunction, const std::string& connectionName) = 0;
    virtual ~IDBUSAdapter() = default;

    // A factory of adapters on the real bus.
    static std::shared_ptr<IDBUSAdapterFactory> createDefaultAdapterFactory();
};

} // namespace DAX::Common::DBUSWrapper
