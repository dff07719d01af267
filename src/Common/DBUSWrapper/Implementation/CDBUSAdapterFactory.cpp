#include "Common/DBUSWrapper/Implementation/CDBUSAdapterFactory.h"

#include <utility>

#include "Common/DBUSWrapper/Implementation/CDBUSAdapter.h"

namespace DAX::Common::DBUSWrapper {

std::shared_ptr<IDBUSAdapter::IDBUSAdapterFactory> IDBUSAdapter::createDefaultAdapterFactory() {
    return std::make_shared<CDBUSAdapterFactory>();
}

std::unique_ptr<IDBUSAdapter> CDBUSAdapterFactory::create(IDBUSWrapper::DBUSType type, const std::string& objectPath,
                                                          std::shared_ptr<IDBUSRequestsHandler> handler,
                                                          bool /*flag*/) {
    return std::make_unique<CDBUSAdapter>(type, objectPath, std::move(handler));
}

} // namespace DAX::Common::DBUSWrapper
