#include <map>
#include <string>

#include "Common/Logging/LoggingStream.h"
#include "Platform/Product/IProductInfo.h"
#include "Platform/Product/Implementation/SystemFacts.h"
#include "Platform/Product/SystemInfoAPIInternalProblemException.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Platform {
namespace {

using Common::Utils::errinfo_description;

// From the platform's numbers.
const std::map<int, IProductInfo::EProductType> productTypeConversionMap = {
    {0, IProductInfo::TV},          {1, IProductInfo::MONITOR},   {2, IProductInfo::AV},  {6, IProductInfo::AV_PLAYER},
    {7, IProductInfo::AV_RECEIVER}, {3, IProductInfo::PROJECTOR}, {4, IProductInfo::LFD}, {5, IProductInfo::SMD},
    {9, IProductInfo::SPK},         {8, IProductInfo::HTV}};

} // namespace

IProductInfo::EProductType IProductInfo::getProductType() {
    const int number =
        SystemFacts::required<int>("com.velmora/featureconf/product.product_type",
                                   "Unable to read product key from system-info", BOOST_CURRENT_LOCATION);
    const auto found = productTypeConversionMap.find(number);
    const EProductType type = found != productTypeConversionMap.end() ? found->second : UNKNOWN_PRODUCT_TYPE;
    if (type == UNKNOWN_PRODUCT_TYPE) {
        DAX_LOG(ERR) << "Value " << number << " can not be converted to EProductType";
    }
    DAX_LOG(INF) << "Product Type: " << type;
    return type;
}

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
