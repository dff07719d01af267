#include "CoreInterface/TransactionProgress.h"

#include <boost/archive/text_iarchive.hpp>
#include <boost/archive/text_oarchive.hpp>
#include <boost/serialization/optional.hpp>

#include "DAXCommon/RecordFields.h"

namespace DAX::Core {

template <class Archive>
void TransactionProgress::serialize(Archive& archive, unsigned int) {
    DAXCommon::serializeFields(archive, *this);
}

template void TransactionProgress::serialize(boost::archive::text_oarchive&, unsigned int);
template void TransactionProgress::serialize(boost::archive::text_iarchive&, unsigned int);

} // namespace DAX::Core
