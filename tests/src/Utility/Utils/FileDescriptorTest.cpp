#include "Utility/Utils/FileDescriptor.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <gtest/gtest.h>

namespace DAX::Tests {
namespace {

using Common::Utils::FileDescriptor;

int openNull() {
    return ::open("/dev/null", O_RDONLY | O_CLOEXEC);
}

bool isOpen(int descriptor) {
    return ::fcntl(descriptor, F_GETFD) >= 0;
}

TEST(FileDescriptorTest, ClosesWhatItOwnsAtItsEnd) {
    int number = -1;
    {
        const FileDescriptor descriptor(openNull());
        number = descriptor.get();
        EXPECT_TRUE(descriptor.isOpen());
        EXPECT_TRUE(isOpen(number));
    }
    EXPECT_FALSE(isOpen(number));
}

TEST(FileDescriptorTest, OwnsNothingAtFirstAndAfterAFailure) {
    EXPECT_FALSE(FileDescriptor().isOpen());
    EXPECT_EQ(FileDescriptor().get(), -1);
    const FileDescriptor descriptor(::open("/dev/null/none", O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_FALSE(descriptor.isOpen());
    errno = 0;
    FileDescriptor(-1);
    EXPECT_EQ(errno, 0) << "something was closed";
}

TEST(FileDescriptorTest, MovesItsDescriptor) {
    FileDescriptor first(openNull());
    const int number = first.get();
    {
        const FileDescriptor second(std::move(first));
        EXPECT_FALSE(first.isOpen()); // NOLINT(bugprone-use-after-move)
        EXPECT_EQ(second.get(), number);
    }
    EXPECT_FALSE(isOpen(number));
}

TEST(FileDescriptorTest, ClosesWhatItOwnedBeforeAnAssignment) {
    FileDescriptor descriptor(openNull());
    const int before = descriptor.get();
    FileDescriptor other(openNull());
    const int number = other.get();
    descriptor = std::move(other);
    EXPECT_FALSE(isOpen(before));
    EXPECT_TRUE(isOpen(number));
    EXPECT_EQ(descriptor.get(), number);
}

TEST(FileDescriptorTest, LeavesTheClosingOfWhatItReleasesToTheCaller) {
    int number = -1;
    {
        FileDescriptor descriptor(openNull());
        number = descriptor.release();
        EXPECT_FALSE(descriptor.isOpen());
    }
    EXPECT_TRUE(isOpen(number));
    EXPECT_EQ(::close(number), 0);
}

} // namespace
} // namespace DAX::Tests
