#pragma once

#include "Common/IO/ITransaction.h"

namespace DAX::Common::IO {

// An object that can take part in a transaction, which saves and restores the object's place in its data. One thread at
// a time.
class ITransactionalEntity {
public:
    virtual ~ITransactionalEntity() = default;

    // Comes after a save: the object names to the transaction, by processDependency(), the objects that it depends on.
    virtual void transactionSaved(ITransaction* transaction) = 0;

    // Saves or restores the object, in the direction of the transaction.
    virtual void transactionSerialize(IStoreTransaction* transaction) = 0;
};

// An entity with one operation for each direction.
class ISaveLoadTransactionalEntity : public ITransactionalEntity {
public:
    // Saves the object; the transaction's serializer saves.
    virtual void transactionSave(IStoreTransaction* transaction) = 0;

    // Restores the object; the transaction's serializer loads.
    virtual void transactionLoad(IStoreTransaction* transaction) = 0;

    void transactionSerialize(IStoreTransaction* transaction) override {
        if (transaction->serializer().saving()) {
            transactionSave(transaction);
        } else {
            transactionLoad(transaction);
        }
    }
};

} // namespace DAX::Common::IO
