#pragma once

#include <memory>
#include <sstream>
#include <string>

#include <boost/optional.hpp>

#include "Common/DBUSWrapper/IDBUSWrapper.h"

namespace DAX::Common::DBUSWrapper {

// The client end: one remote object over a bus connection of its own, and so with a unique bus name of its own. It is
// made and initialized by one thread; afterwards any thread may use it. Calls of one proxy take turns: each waits for
// the end of the one before.
//
// The connection offers no object. Messages that others send to it are read and dropped, and delay no call. Between the
// calls one thread does that for all proxies of the process; it lives as long as any proxy. A proxy that was made
// before fork() has no such reader in the child.
class IDBUSProxy {
public:
    // Makes proxies. Any thread.
    class IDBUSProxyFactory {
    public:
        virtual ~IDBUSProxyFactory() = default;

        // Opens a connection; the remote side is not called yet. Throws ErrorConnectingToDBUS without a bus, and when
        // the system has no thread or descriptor left. `callTimeoutMs` limits each call, in milliseconds on the steady
        // clock; without it the limit is 60000. `activationTimeoutMs` has no effect. Names that are not valid fail at
        // the first call.
        virtual std::unique_ptr<IDBUSProxy> create(IDBUSWrapper::DBUSType type, const std::string& objectPath,
                                                   const std::string& interfaceName,
                                                   boost::optional<unsigned int> activationTimeoutMs,
                                                   boost::optional<unsigned int> callTimeoutMs) = 0;
    };

    // "Proxy-" and a number from 0 to 100000, meant to tell the proxies of one process apart. The numbers are drawn at
    // random, so two proxies may have the same one; the sequence is the same in every process.
    virtual std::string getProxyUniqueId() = 0;

    // The unique bus name of the proxy's connection, such as ":1.42".
    virtual std::string getDBUSDebugConnectionId() = 0;

    // One blocking call of `method`, with the bytes of `parameters` as its one argument, or none when they are empty.
    // Appends the result archive to `output`, and puts the second array of the reply into `function`. Returns true for
    // a normal reply, false for an exception, whose name is then in `function`. The time-out includes the wait for the
    // turn, but does not end that wait.
    //
    // Throws RemoteObjectActivationTimedOut when the bus could not start the remote side in time, DBUSMemoryError
    // without memory, and RemoteObjectNotAccessible in all other cases: no reply in time, a broken connection, an
    // invalid name, a reply that is not made of byte arrays. `output` and `function` then stay as they were. The proxy
    // stays usable, but a broken connection is not opened again.
    virtual bool call(const std::string& method, const std::stringstream& parameters, std::stringstream& output,
                      std::string& function) = 0;

    // Sets the bus name under which the remote side is called; before, every call throws RemoteObjectNotAccessible.
    // Does not wait for the remote side: the first call starts it.
    virtual void init(const std::string& connectionName) = 0;
    virtual ~IDBUSProxy() = default;

    // A factory of proxies on the real bus.
    static std::unique_ptr<IDBUSProxyFactory> createDefaultProxyFactory();
};

} // namespace DAX::Common::DBUSWrapper
