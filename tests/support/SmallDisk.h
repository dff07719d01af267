#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace DAX::Tests {

// Whether this process may mount a disk of its own; only the superuser may. Tests that need one skip themselves
// without.
bool canMountSmallDisk();

// Runs the function in a child process to which the folder is an empty disk of this many bytes; nobody else sees it,
// and it goes with the child. Expectations that fail there are told by the child. True when all held and the child
// ended by itself.
bool onSmallDisk(const std::string& folder, std::size_t bytes, const std::function<void()>& function);

// Takes all the room that is left under the folder by a file of this name in it; without the file there is room again.
void fillDisk(const std::string& folder, const std::string& name = "filler");

} // namespace DAX::Tests

// Ends the test, with a line that says so, where it cannot be run.
#define SKIP_WITHOUT_SMALL_DISK()                                                                                      \
    if (!::DAX::Tests::canMountSmallDisk()) {                                                                          \
        GTEST_SKIP() << "only the superuser may mount a disk";                                                         \
    }                                                                                                                  \
    static_assert(true, "")
