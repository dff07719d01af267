#include "DAXIPC/IDAXIPC.h"

#include <dbus/dbus.h>
#include <gtest/gtest.h>

namespace {
int threadInitializations = 0;
}

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the linker's
extern "C" {
dbus_bool_t __real_dbus_threads_init_default();
dbus_bool_t __wrap_dbus_threads_init_default() {
    ++threadInitializations;
    return __real_dbus_threads_init_default();
}
}
// NOLINTEND(bugprone-reserved-identifier)

namespace DAX::Tests {
namespace {

TEST(IDAXIPCTest, PreparesTheBusLibraryForThreads) {
    const int before = threadInitializations;
    DAXIPC::IDAXIPC::initialize();
    EXPECT_EQ(threadInitializations, before + 1);
}

} // namespace
} // namespace DAX::Tests
