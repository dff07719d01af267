#include "DAXProductionConfig.h"

#include "Call.h"

namespace DAX::Common::Debug {

bool isProduction() {
    return KovanStubs::works(__func__);
}

} // namespace DAX::Common::Debug
