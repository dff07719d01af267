#include "CoreInterface/SearchResult.h"

#include <boost/archive/text_iarchive.hpp>
#include <boost/archive/text_oarchive.hpp>
#include <boost/serialization/optional.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>

#include "DAXCommon/RecordFields.h"

namespace DAX::Core {

template <class Archive>
void SearchResult::serialize(Archive& archive, unsigned int) {
    DAXCommon::serializeFields(archive, *this);
}

template void SearchResult::serialize(boost::archive::text_oarchive&, unsigned int);
template void SearchResult::serialize(boost::archive::text_iarchive&, unsigned int);

} // namespace DAX::Core
