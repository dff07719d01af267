#include <gmock/gmock.h>

#include "Common/IO/ISerializer.h"
#include "Common/IO/ISink.h"
#include "Common/IO/IStream.h"
#include "Common/IO/ITransactionalEntity.h"
#include "Utility/Utils/IDebugName.h"
#include "support/Slots.h"

namespace DAX::Tests {
namespace {

using namespace Common::IO;
using testing::ElementsAre;

// The destructor takes slots 0 and 1.
TEST(SlotOrder, OfStreams) {
    EXPECT_THAT(slotsOf(&IStream::readChunk), ElementsAre(2));
    EXPECT_THAT(slotsOf(&IZeroCopyStream::readChunk, &IZeroCopyStream::nextChunk, &IZeroCopyStream::giveBack),
                ElementsAre(2, 3, 4));
    EXPECT_THAT(slotsOf(&IBoundedStream::atEnd), ElementsAre(3));
    EXPECT_THAT(slotsOf(&ISeekableStream::position, &ISeekableStream::seek, &ISeekableStream::size),
                ElementsAre(4, 5, 6));
    EXPECT_THAT(slotsOf(&IStorageStream::open, &IStorageStream::close, &IStorageStream::isOpened,
                        &IStorageStream::alreadyClosed),
                ElementsAre(7, 8, 9, 10));
}

TEST(SlotOrder, OfSinks) {
    EXPECT_THAT(slotsOf(&ISink::writeChunk, &ISink::markEndOfData, &ISink::endOfDataMarked), ElementsAre(2, 3, 4));
    EXPECT_THAT(slotsOf(&IZeroCopySink::writeChunk, &IZeroCopySink::nextChunk, &IZeroCopySink::giveBack),
                ElementsAre(2, 5, 6));
    EXPECT_THAT(slotsOf(&ISeekableSink::position, &ISeekableSink::seek), ElementsAre(5, 6));
    EXPECT_THAT(slotsOf(&IStorageSink::open, &IStorageSink::close, &IStorageSink::isOpened, &IStorageSink::flush,
                        &IStorageSink::alreadyClosed),
                ElementsAre(7, 8, 9, 10, 11));
}

TEST(SlotOrder, OfEntities) {
    EXPECT_THAT(slotsOf(&ITransactionalEntity::transactionSaved, &ITransactionalEntity::transactionSerialize),
                ElementsAre(2, 3));
    EXPECT_THAT(slotsOf(&ISaveLoadTransactionalEntity::transactionSave, &ISaveLoadTransactionalEntity::transactionLoad),
                ElementsAre(4, 5));
    EXPECT_THAT(slotsOf(&Common::Utils::IDebugName::debugName), ElementsAre(2));
}

class Serializer : public ISerializer {
public:
    static std::size_t ownSlot() { return slotOf(&Serializer::serializeDataImpl); }
};

TEST(SlotOrder, OfSerializers) {
    using BinarySerializer = serializers::binary::ISerializer;
    EXPECT_THAT(slotsOf(&BinarySerializer::saving, &BinarySerializer::serializeData), ElementsAre(2, 3));
    EXPECT_EQ(Serializer::ownSlot(), 4U);
}

template <class Base, class Class>
constexpr bool derivesFrom = std::is_convertible<Class*, Base*>::value;

// A virtual base cannot be cast down statically.
template <class Base, class Class, class = void>
struct IsVirtualBase : std::true_type {};
template <class Base, class Class>
struct IsVirtualBase<Base, Class, std::void_t<decltype(static_cast<Class*>(std::declval<Base*>()))>> : std::false_type {
};

TEST(SlotOrder, BasesAreVirtualWhereTheLayersJoin) {
    EXPECT_TRUE((IsVirtualBase<IStream, IBoundedStream>::value));
    EXPECT_TRUE((IsVirtualBase<IBoundedStream, ISeekableStream>::value));
    EXPECT_TRUE((IsVirtualBase<ISeekableStream, IStorageStream>::value));
    EXPECT_TRUE((IsVirtualBase<ISink, ISeekableSink>::value));
    EXPECT_TRUE((IsVirtualBase<ISeekableSink, IStorageSink>::value));
    EXPECT_FALSE((IsVirtualBase<IStream, IZeroCopyStream>::value));
    EXPECT_FALSE((IsVirtualBase<ISink, IZeroCopySink>::value));
    EXPECT_FALSE((IsVirtualBase<ITransactionalEntity, ISaveLoadTransactionalEntity>::value));
}

TEST(SlotOrder, TheStorageChecksAreNoPublicBaseAndHoldNoData) {
    EXPECT_FALSE((derivesFrom<StorageHelper<IStorageStream>, IStorageStream>));
    EXPECT_FALSE((derivesFrom<StorageHelper<IStorageSink>, IStorageSink>));
    EXPECT_TRUE(std::is_empty<StorageHelper<IStorageStream>>::value);
    EXPECT_TRUE(std::is_empty<StorageHelper<IStorageSink>>::value);
}

} // namespace
} // namespace DAX::Tests
