#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace DAX::Tests {

// Whether this process may mount a disk of its own, which only the superuser may. Tests that need one skip themselves
// otherwise.
bool canMountSmallDisk();

// Runs the function in a child process for which the folder is an empty disk of this many bytes. No other process sees
// the disk, and it ends with the child. The child prints expectations that fail there. True when none failed and the
// child ended by itself.
bool onSmallDisk(const std::string& folder, std::size_t bytes, const std::function<void()>& function);

// Fills the disk under the folder with a file of this name. To remove the file makes room again.
void fillDisk(const std::string& folder, const std::string& name = "filler");

} // namespace DAX::Tests

// Skips the test, with a line that says so, where it cannot run.
#define SKIP_WITHOUT_SMALL_DISK()                                                                                      \
    if (!::DAX::Tests::canMountSmallDisk()) {                                                                          \
        GTEST_SKIP() << "only the superuser may mount a disk";                                                         \
    }                                                                                                                  \
    static_assert(true, "")
