#include "ServiceInterface/ServiceTransactionProgress.h"

#include <boost/archive/text_iarchive.hpp>
#include <boost/archive/text_oarchive.hpp>
#include <boost/serialization/optional.hpp>

#include "DAXCommon/RecordFields.h"

namespace DAX::Service {

template <class Archive>
void ServiceTransactionProgress::serialize(Archive& archive, unsigned int) {
    DAXCommon::serializeFields(archive, *this);
}

template void ServiceTransactionProgress::serialize(boost::archive::text_oarchive&, unsigned int);
template void ServiceTransactionProgress::serialize(boost::archive::text_iarchive&, unsigned int);

} // namespace DAX::Service
