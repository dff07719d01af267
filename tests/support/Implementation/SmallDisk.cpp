#include "support/SmallDisk.h"

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include "support/ForkedProcess.h"

namespace DAX::Tests {

namespace {

const int CANNOT_MOUNT = 77;

bool mount(const std::string& folder, std::size_t bytes) {
    const std::string size = "size=" + std::to_string(bytes);
    return unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("tmpfs", folder.c_str(), "tmpfs", 0, size.c_str()) == 0;
}

} // namespace

bool canMountSmallDisk() {
    ForkedProcess child([] { return mount("/mnt", 4096) ? 0 : CANNOT_MOUNT; });
    return child.wait() == 0;
}

bool onSmallDisk(const std::string& folder, std::size_t bytes, const std::function<void()>& function) {
    ForkedProcess child([&] {
        if (!mount(folder, bytes)) {
            return CANNOT_MOUNT;
        }
        function();
        return ::testing::Test::HasFailure() ? 1 : 0;
    });
    return child.wait() == 0;
}

void fillDisk(const std::string& folder, const std::string& name) {
    const std::string path = folder + "/" + name;
    const int filler = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (filler < 0) {
        throw std::system_error(errno, std::generic_category(), path);
    }
    const std::string block(4096, 'x');
    while (write(filler, block.data(), block.size()) > 0) {
    }
    const bool full = errno == ENOSPC;
    close(filler);
    if (!full) {
        throw std::runtime_error(path + ": the disk is not full");
    }
}

} // namespace DAX::Tests
