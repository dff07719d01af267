#include "UpgradeKind.h"

#include <boost/archive/text_iarchive.hpp>
#include <boost/archive/text_oarchive.hpp>

#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::DAXCommon {

template <class OutArchive>
void saveUpgradeKind(OutArchive& archive, UpgradeKind kind) {
    const unsigned int value = kind & 0xFFU;
    archive << value;
}

template <class InArchive>
void loadUpgradeKind(InArchive& archive, UpgradeKind& kind) {
    unsigned short wide = 0;
    archive >> wide;
    const auto value = static_cast<unsigned char>(wide & 0xFFU);
    if (value > UPGRADE_KIND_IMPORTANT) {
        DAX_THROW(Common::Utils::GenericException(), "Invalid UpgradeKind value: " << value);
    }
    kind = static_cast<UpgradeKind>(value);
}

template void saveUpgradeKind(boost::archive::text_oarchive&, UpgradeKind);
template void loadUpgradeKind(boost::archive::text_iarchive&, UpgradeKind&);

} // namespace DAX::DAXCommon
