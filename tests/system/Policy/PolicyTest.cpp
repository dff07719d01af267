// The daemon on a system bus with the packaged policy: who reaches it.
#include <gmock/gmock.h>

#include "system/support/Desk.h"

namespace DAX {
namespace Tests {
namespace {

using namespace testing;

TEST(PolicyTest, LetsRootHaveAWholeUpgrade) {
    const Desk desk("", SystemBusRules::ofDevice());
    const FinishedRun upgrade = desk.run("daxctl", {"upgrade", "--type", "OTN", "--item", "main"});
    EXPECT_EQ(upgrade.end, ProcessEnd::exited(0)) << upgrade.errors;
    EXPECT_THAT(desk.coreMethods(), Contains("startFinalization"));
}

} // namespace
} // namespace Tests
} // namespace DAX
