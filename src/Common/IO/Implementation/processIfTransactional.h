#pragma once

#include "Common/IO/ITransactionalEntity.h"

namespace DAX::Common::IO {

// Takes an object into the transaction, if it can take part in one.
template <class Subject>
void processIfTransactional(ITransaction& transaction, Subject& subject) {
    if (auto* const entity = dynamic_cast<ITransactionalEntity*>(&subject)) {
        transaction.processDependency(entity);
    }
}

} // namespace DAX::Common::IO
