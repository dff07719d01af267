#pragma once

#include <functional>

#include <boost/none.hpp>
#include <boost/optional.hpp>

#include "serializers/binary/ISerializer.h"

namespace DAX::Common::IO {

class ITransactionalEntity;

// A resumable operation that saves, or restores, the objects that take part in it.
class ITransaction {
public:
    virtual ~ITransaction() = default;

    // Takes the entity into the transaction. With a function, that one saves it, in place of its own
    // transactionSerialize.
    virtual void processDependency(ITransactionalEntity* entity, boost::optional<std::function<void()>> serialize) = 0;
    void processDependency(ITransactionalEntity* entity) { processDependency(entity, boost::none); }
};

// The half of it that moves the data.
class IStoreTransaction : public ITransaction {
public:
    // Whose saving() is the direction of the transaction.
    virtual serializers::binary::ISerializer& serializer() = 0;
};

} // namespace DAX::Common::IO
