#include "DAXIPC/IDAXIPC.h"

#include "Common/DBUSWrapper/IDBUSWrapper.h"

namespace DAX {
namespace DAXIPC {

void IDAXIPC::initialize() {
    Common::DBUSWrapper::IDBUSWrapper::initialize();
}

} // namespace DAXIPC
} // namespace DAX
