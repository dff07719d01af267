#pragma once

#include <memory>
#include <string>

#include "Common/DBUSWrapper/IDBUSProxy.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// A new connection for one of the service's objects. Throws ErrorConnectingToDBUS.
std::shared_ptr<Common::DBUSWrapper::IDBUSProxy>
connectToService(Common::DBUSWrapper::IDBUSProxy::IDBUSProxyFactory& factory);

// Tells the service at `busName` that the object which was requested with this proxy's id belongs to this connection.
// Throws what callRemote() throws.
void sayHello(Common::DBUSWrapper::IDBUSProxy& proxy, const std::string& busName);

} // namespace DAX::DAXIPC::DBUSLowLevel
