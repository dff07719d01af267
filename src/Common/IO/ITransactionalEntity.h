#pragma once

#include "Common/IO/ITransaction.h"

namespace DAX::Common::IO {

// An object that can take part in a transaction: its place in its data is saved, and restored.
class ITransactionalEntity {
public:
    virtual ~ITransactionalEntity() = default;

    // A save has been done: tells the transaction what this object stands on.
    virtual void transactionSaved(ITransaction* transaction) = 0;

    // Saves, or restores, in the transaction's direction.
    virtual void transactionSerialize(IStoreTransaction* transaction) = 0;
};

// An entity with an operation for each direction.
class ISaveLoadTransactionalEntity : public ITransactionalEntity {
public:
    virtual void transactionSave(IStoreTransaction* transaction) = 0;
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
