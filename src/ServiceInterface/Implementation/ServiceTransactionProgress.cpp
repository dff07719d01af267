#include "ServiceInterface/ServiceTransactionProgress.h"

#include <boost/archive/text_iarchive.hpp>
#include <boost/archive/text_oarchive.hpp>
#include <boost/serialization/optional.hpp>

namespace DAX::Service {

template <class Archive>
void ServiceTransactionProgress::serialize(Archive& archive, unsigned int) {
    archive& result;
    archive& progressPercent;
    archive& progressDetail;
}

template void ServiceTransactionProgress::serialize(boost::archive::text_oarchive&, unsigned int);
template void ServiceTransactionProgress::serialize(boost::archive::text_iarchive&, unsigned int);

} // namespace DAX::Service
