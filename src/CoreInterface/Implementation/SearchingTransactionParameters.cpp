#include "CoreInterface/SearchingTransactionParameters.h"

#include <boost/archive/text_iarchive.hpp>
#include <boost/archive/text_oarchive.hpp>

namespace DAX::Core {

template <class Archive>
void SearchingTransactionParameters::serialize(Archive& archive, unsigned int) {
    archive& upgradeType;
    archive& transactionType;
    archive& isCellularConnectionAllowed;
    archive& wasAnySuccessfulUpgrade;
}

template void SearchingTransactionParameters::serialize(boost::archive::text_oarchive&, unsigned int);
template void SearchingTransactionParameters::serialize(boost::archive::text_iarchive&, unsigned int);

} // namespace DAX::Core
