#include "DAXIPC/IDAXIPC.h"

#include "Common/DBUSWrapper/IDBUSWrapper.h"

namespace DAX::DAXIPC {

void IDAXIPC::initialize() {
    Common::DBUSWrapper::IDBUSWrapper::initialize();
}

} // namespace DAX::DAXIPC
