#include "ServiceInterface/ServiceSearchResult.h"

#include <boost/archive/text_iarchive.hpp>
#include <boost/archive/text_oarchive.hpp>
#include <boost/serialization/optional.hpp>

#include "DAXCommon/RecordFields.h"

namespace DAX::Service {

template <class Archive>
void ServiceSearchResult::serialize(Archive& archive, unsigned int) {
    DAXCommon::serializeFields(archive, *this);
}

template void ServiceSearchResult::serialize(boost::archive::text_oarchive&, unsigned int);
template void ServiceSearchResult::serialize(boost::archive::text_iarchive&, unsigned int);

} // namespace DAX::Service
