#pragma once

#include <functional>

#include <boost/none.hpp>
#include <boost/optional.hpp>

#include "serializers/binary/ISerializer.h"

namespace DAX::Common::IO {

class ITransactionalEntity;

// A resumable operation that saves or restores the objects that take part in it. One thread at a time.
class ITransaction {
public:
    virtual ~ITransaction() = default;

    // Takes the entity into the transaction. When `serialize` is given, it is called in place of the entity's own
    // transactionSerialize(). The entity must outlive the transaction.
    virtual void processDependency(ITransactionalEntity* entity, boost::optional<std::function<void()>> serialize) = 0;
    void processDependency(ITransactionalEntity* entity) { processDependency(entity, boost::none); }
};

// A transaction that moves the data.
class IStoreTransaction : public ITransaction {
public:
    // The serializer of this transaction; its saving() tells the direction. It belongs to the transaction.
    virtual serializers::binary::ISerializer& serializer() = 0;
};

} // namespace DAX::Common::IO
