#pragma once

#include <memory>
#include <sstream>
#include <string>

#include <boost/optional.hpp>

#include "Common/DBUSWrapper/IDBUSWrapper.h"

namespace DAX::Common::DBUSWrapper {

// The client end: one remote object over a bus connection of its own, and so with a unique bus name of its own. One
// thread at a time.
//
// The connection offers no object. What others send to it is read and dropped, and delays no call. Between the calls
// one thread, shared by all proxies of the process, does that; it lives as long as a proxy does. A proxy made before
// fork() has no reader in the child.
class IDBUSProxy {
public:
    class IDBUSProxyFactory {
    public:
        virtual ~IDBUSProxyFactory() = default;

        // Opens a connection; does not talk to the remote side. Throws ErrorConnectingToDBUS, also when the system has
        // no thread or descriptor left. Any thread. Time-outs in milliseconds, counted on the steady clock; without
        // `callTimeoutMs` a call waits 60000. `activationTimeoutMs` is kept and has no effect.
        virtual std::unique_ptr<IDBUSProxy> create(IDBUSWrapper::DBUSType type, const std::string& objectPath,
                                                   const std::string& interfaceName,
                                                   boost::optional<unsigned int> activationTimeoutMs,
                                                   boost::optional<unsigned int> callTimeoutMs) = 0;
    };

    // "Proxy-" and a number that tells the proxies of one process apart.
    virtual std::string getProxyUniqueId() = 0;

    // The unique bus name of the proxy's connection.
    virtual std::string getDBUSDebugConnectionId() = 0;

    // One blocking call. Appends the result archive to `output` and puts the second array of the reply in `function`.
    // True: a normal reply. False: an exception, whose name is in `function`. Throws RemoteObjectActivationTimedOut,
    // RemoteObjectNotAccessible, DBUSMemoryError; the proxy stays usable.
    virtual bool call(const std::string& method, const std::stringstream& parameters, std::stringstream& output,
                      std::string& function) = 0;

    // Says under which bus name the remote side is called.
    virtual void init(const std::string& connectionName) = 0;
    virtual ~IDBUSProxy() = default;

    static std::unique_ptr<IDBUSProxyFactory> createDefaultProxyFactory();
};

} // namespace DAX::Common::DBUSWrapper
