#include <map>
#include <string>

#include "Common/Logging/LoggingStream.h"
#include "Platform/Product/IProductInfo.h"
#include "Platform/Product/SystemInfoAPIInternalProblemException.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Platform {
namespace {

using Common::Utils::errinfo_description;

} // namespace

bool IProductInfo::isTBMModel() {
    try {
        return getProductType() == LFD && !isIWBSuppoted();
    } catch (...) {
        DAX_LOG(ERR) << "Unable to determine if this model is TBM. By default do not use TBM mode";
        return false;
    }
}

std::string IProductInfo::productTypeToString(EProductType type) {
    static const std::map<EProductType, std::string> texts = {{TV, "TV"},          {MONITOR, "MONITOR"},
                                                              {AV, "AV"},          {AV_PLAYER, "AV"},
                                                              {AV_RECEIVER, "AV"}, {PROJECTOR, "PROJECTOR"},
                                                              {LFD, "LFD"},        {SMD, "SMD"},
                                                              {SPK, "SPK"},        {HTV, "HTV"}};
    const auto found = texts.find(type);
    if (found == texts.end()) {
        DAX_LOG(ERR) << "Can't convert this productType value to string: " << type;
        DAX_THROW(SystemInfoAPIInternalProblemException(),
                  errinfo_description("Unable to convert this productType value to string"));
    }
    return found->second;
}

} // namespace DAX::Platform
