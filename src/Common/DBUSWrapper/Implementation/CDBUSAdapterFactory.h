#pragma once

#include <memory>
#include <string>

#include "Common/DBUSWrapper/IDBUSAdapter.h"

namespace DAX::Common::DBUSWrapper {

class CDBUSAdapterFactory : public IDBUSAdapter::IDBUSAdapterFactory {
public:
    std::unique_ptr<IDBUSAdapter> create(IDBUSWrapper::DBUSType type, const std::string& objectPath,
                                         std::shared_ptr<IDBUSRequestsHandler> handler, bool flag) override;
};

} // namespace DAX::Common::DBUSWrapper
