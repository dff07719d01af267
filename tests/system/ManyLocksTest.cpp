// Locks with names as long as a client likes.
#include <chrono>
#include <fstream>

#include <gmock/gmock.h>

#include "system/support/Desk.h"

namespace DAX {
namespace Tests {
namespace {

// A figure of /proc/PID/status, such as "VmHWM:", in kB; 0 when it is not there.
long statusOf(pid_t process, const std::string& figure) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.compare(0, figure.size(), figure) == 0) {
            return std::stol(line.substr(figure.size()));
        }
    }
    return 0;
}

// From now on the process's highest resident size counts anew.
bool forgetPeak(pid_t process) {
    std::ofstream clear("/proc/" + std::to_string(process) + "/clear_refs");
    clear << "5" << std::flush;
    return clear.good();
}

TEST(ManyLocks, WithLongNamesMakeARefusalNeitherSlowNorLarge) {
    const int locks = 300;
    Desk desk;
    const auto client = desk.connect();
    const std::string name(1024 * 1024, 'n');
    for (int lock = 0; lock < locks; ++lock) {
        client->acquireExternalLock(name, DAXCommon::ServiceClientPriority(7));
    }
    const pid_t daemon = desk.daemon();
    const long before = statusOf(daemon, "VmRSS:");
    ASSERT_GT(before, locks * 1024) << "the locks are not held";
    ASSERT_TRUE(forgetPeak(daemon));

    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(client->getService(DAXCommon::ServiceClientPriority(7), "app", DAXCommon::ServiceTransactionType(2)),
              nullptr);

    EXPECT_LE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    EXPECT_LE(statusOf(daemon, "VmHWM:") - before, 100 * 1024);
    EXPECT_EQ(desk.countMessages("External lock is acquired by:  nnn"), 1);
}

} // namespace
} // namespace Tests
} // namespace DAX
