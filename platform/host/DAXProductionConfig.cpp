#include "DAXProductionConfig.h"

#include "Border.h"
#include "DeviceFile.h"

namespace DAX::Common::Debug {

bool isProduction() {
    static const bool production =
        KovanHost::atBorder(false, [] { return KovanHost::factOf<bool>(KovanHost::SOFTWARE, "production"); });
    return production;
}

} // namespace DAX::Common::Debug
