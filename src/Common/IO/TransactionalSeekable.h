#pragma once

#include <functional>

#include "Common/IO/ISink.h"
#include "Common/IO/IStream.h"
#include "Common/IO/ITransactionalEntity.h"
#include "Utility/Utils/DAXAssert.h"
#include "serializers/binary/little_endian.h"

namespace DAX::Common::IO {

// Saves and restores the position of the ISeekable that it is mixed into; without one, that is an assertion failure.
template <class ISeekable>
class TransactionalSeekable : public ISaveLoadTransactionalEntity {
public:
    void transactionSaved(ITransaction*) override {} // a file depends on no other object

    void transactionSave(IStoreTransaction* transaction) override {
        saveAtPosition(transaction, seekable().position());
    }

    void transactionLoad(IStoreTransaction* transaction) override {
        streamsize_t position = 0;
        transaction->serializer().serialize<serializers::binary::little_endian<8>>(position);
        seekable().seek(position);
    }

    // Saves the given position. A storage sink is flushed, so that the data up to its own position is on the medium.
    void saveAtPosition(IStoreTransaction* transaction, streamsize_t position) {
        transaction->serializer().serialize<serializers::binary::little_endian<8>>(position);
        if (auto* const sink = dynamic_cast<IStorageSink*>(this)) {
            sink->flush();
        }
    }

    // A function that saves the object's position at the time of its call, less `rewind` bytes. It must not outlive
    // this object.
    std::function<void()> saveRewound(IStoreTransaction* transaction, unsigned long rewind) {
        return [this, transaction, rewind] { saveAtPosition(transaction, seekable().position() - rewind); };
    }

private:
    ISeekable& seekable() {
        auto* const thisSeekable = dynamic_cast<ISeekable*>(this);
        BOOST_ASSERT(thisSeekable);
        return *thisSeekable;
    }
};

} // namespace DAX::Common::IO
