// Locks with names of any length.
#include <gmock/gmock.h>

#include "support/CpuTime.h"
#include "support/Prompt.h"
#include "support/Sanitizer.h"
#include "system/support/Desk.h"
#include "system/support/ProcessMemory.h"

namespace DAX::Tests {
namespace {

// In kilobytes.
const long LARGEST_GROWTH = (HAS_SANITIZER ? 1024 : 100) * 1024;

TEST(ManyLocks, WithLongNamesMakeARefusalNeitherSlowNorLarge) {
    const int locks = 300;
    Desk desk{"", SystemBusRules::ofDevice()};
    const auto client = desk.connect();
    const std::string name(1024 * 1024, 'n');
    for (int lock = 0; lock < locks; ++lock) {
        client->acquireExternalLock(name, DAXCommon::ServiceClientPriority(7));
    }
    const pid_t daemon = desk.daemon();
    const long before = residentKilobytes(daemon);
    ASSERT_GT(before, locks * 1024) << "the locks are not held";
    ASSERT_TRUE(forgetPeak(daemon));

    const auto worked = cpuTimeOf(daemon);
    EXPECT_EQ(client->getService(DAXCommon::ServiceClientPriority(7), "app", DAXCommon::ServiceTransactionType(2)),
              nullptr);

    EXPECT_LE(cpuTimeOf(daemon) - worked, PROMPT);
    EXPECT_LE(peakKilobytes(daemon) - before, LARGEST_GROWTH);
    EXPECT_EQ(desk.countMessages("External lock is acquired by:  nnn"), 1);
}

} // namespace
} // namespace DAX::Tests
