#include "CoreInterface/SearchingTransactionParameters.h"

#include <boost/archive/text_iarchive.hpp>
#include <boost/archive/text_oarchive.hpp>

#include "DAXCommon/RecordFields.h"

namespace DAX::Core {

template <class Archive>
void SearchingTransactionParameters::serialize(Archive& archive, unsigned int) {
    DAXCommon::serializeFields(archive, *this);
}

template void SearchingTransactionParameters::serialize(boost::archive::text_oarchive&, unsigned int);
template void SearchingTransactionParameters::serialize(boost::archive::text_iarchive&, unsigned int);

} // namespace DAX::Core
