#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/Implementation/ServiceConnection.h"

#include <boost/none.hpp>
#include <boost/serialization/string.hpp>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/RemoteCall.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ServiceMethods.h"

namespace DAX::DAXIPC::DBUSLowLevel {

using namespace Common::DBUSWrapper;
namespace DBUSIServiceManager = DBUSNames::DBUSService::DBUSIServiceManager;

std::shared_ptr<IDBUSProxy> connectToService(IDBUSProxy::IDBUSProxyFactory& factory) {
    return factory.create(IDBUSWrapper::SYSTEM, DBUSIServiceManager::OBJECT_PATH, DBUSIServiceManager::INTERFACE_NAME,
                          boost::none, boost::none);
}

void sayHello(IDBUSProxy& proxy, const std::string& busName) {
    proxy.init(busName);
    callRemote<ServiceMethods::helloMessage>(proxy, proxy.getProxyUniqueId());
}

} // namespace DAX::DAXIPC::DBUSLowLevel
