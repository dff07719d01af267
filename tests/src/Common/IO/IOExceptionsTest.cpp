#include "Common/IO/IOExceptions.h"

#include <type_traits>

#include <gtest/gtest.h>

#include "Common/IO/FileExceptions.h"
#include "Utility/Utils/ErrorTags.h"
#include "Utility/Utils/GenericException.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using namespace Common::IO;
using namespace IOExceptions;
using Common::Utils::errinfo_stream_text;

template <class E>
class IOExceptionsTest : public testing::Test {};

using Family =
    testing::Types<NotOpenedException, AlreadyOpenedException, AlreadyClosedException, EndOfDataMarkedException,
                   StreamDepletedException, OutOfRangeException, NotSupportedException, ChecksumedStreamDataCorrupted,
                   ChecksumedSinkUnderlyingSinkNotRewound, FileStreamIOException, FileSinkIOException>;
TYPED_TEST_SUITE(IOExceptionsTest, Family, );

TYPED_TEST(IOExceptionsTest, HasTheFamilysRootAndNoOtherFamilys) {
    EXPECT_TRUE((std::is_convertible<TypeParam*, IOStreamsException*>::value));
    EXPECT_TRUE((std::is_convertible<TypeParam*, std::exception*>::value));
    EXPECT_TRUE((std::is_convertible<TypeParam*, boost::exception*>::value));
    EXPECT_FALSE((std::is_base_of<Common::Utils::GenericException, TypeParam>::value));
}

TYPED_TEST(IOExceptionsTest, IsNoneOfItsSiblings) {
    EXPECT_EQ((std::is_base_of<NotOpenedException, TypeParam>::value),
              (std::is_same<NotOpenedException, TypeParam>::value));
    EXPECT_EQ((std::is_base_of<AlreadyClosedException, TypeParam>::value),
              (std::is_same<AlreadyClosedException, TypeParam>::value));
    EXPECT_EQ((std::is_base_of<FileSinkIOException, TypeParam>::value),
              (std::is_same<FileSinkIOException, TypeParam>::value));
}

// Each of the two bases exists only once in a class that derives from two of the family.
class Joined : public OutOfRangeException, public StreamDepletedException {};

TEST(IOExceptions, ShareTheirVirtualBases) {
    EXPECT_TRUE((std::is_convertible<Joined*, std::exception*>::value));
    EXPECT_TRUE((std::is_convertible<Joined*, boost::exception*>::value));
}

TEST(FileExceptions, CarryTheErrnoValueInWords) {
    EXPECT_EQ(textOf<errinfo_stream_text>(FileStreamIOException(2)), " errno=2 (No such file or directory)");
    EXPECT_EQ(textOf<errinfo_stream_text>(FileSinkIOException(5)), " errno=5 (Input/output error)");
    EXPECT_EQ(textOf<errinfo_stream_text>(FileSinkNotEnoughSpaceException(28)), " errno=28 (No space left on device)");
}

TEST(FileExceptions, AFullDiskIsAFailureOfASink) {
    EXPECT_TRUE((std::is_base_of<FileSinkIOException, FileSinkNotEnoughSpaceException>::value));
    EXPECT_FALSE((std::is_base_of<FileStreamIOException, FileSinkNotEnoughSpaceException>::value));
}

} // namespace
} // namespace DAX::Tests
