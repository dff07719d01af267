#include "Common/IO/StorageHelper.h"

#include <gmock/gmock.h>

#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using namespace Common::IO;
using namespace IOExceptions;
using Common::Utils::errinfo_subject;

// Has the life of a storage object and nothing else; the checks are public.
class Storage : public StorageHelper<Storage>, public Common::Utils::IDebugName {
public:
    using StorageHelper::openIfNotOpened;
    using StorageHelper::throwIfAlreadyClosed;
    using StorageHelper::throwIfNotOpened;
    using StorageHelper::throwIfOpened;

    void open() { ++opens; }
    bool isOpened() { return opened; }
    bool alreadyClosed() { return closed; }
    std::string debugName() const override { return "Storage(7)"; }

    bool opened = false;
    bool closed = false;
    int opens = 0;
};

class StorageHelperTest : public testing::Test {
protected:
    Storage storage;
};

TEST_F(StorageHelperTest, NewStorageIsNotOpened) {
    EXPECT_NO_THROW(storage.throwIfOpened());
    EXPECT_NO_THROW(storage.throwIfAlreadyClosed());
    EXPECT_EQ((thrownText<errinfo_subject, NotOpenedException>([&] { storage.throwIfNotOpened(); })), "Storage(7)");
}

TEST_F(StorageHelperTest, OpenedStorageIsOpened) {
    storage.opened = true;
    EXPECT_NO_THROW(storage.throwIfNotOpened());
    EXPECT_NO_THROW(storage.throwIfAlreadyClosed());
    EXPECT_EQ((thrownText<errinfo_subject, AlreadyOpenedException>([&] { storage.throwIfOpened(); })), "Storage(7)");
}

TEST_F(StorageHelperTest, ClosedStorageIsClosed) {
    storage.closed = true;
    EXPECT_NO_THROW(storage.throwIfOpened());
    EXPECT_EQ((thrownText<errinfo_subject, AlreadyClosedException>([&] { storage.throwIfAlreadyClosed(); })),
              "Storage(7)");
}

TEST_F(StorageHelperTest, OpensWhatIsNotOpened) {
    storage.openIfNotOpened();
    EXPECT_EQ(storage.opens, 1);
    storage.opened = true;
    storage.openIfNotOpened();
    EXPECT_EQ(storage.opens, 1);
}

} // namespace
} // namespace DAX::Tests
