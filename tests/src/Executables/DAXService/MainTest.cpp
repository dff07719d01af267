#include <algorithm>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include "support/FakeKovan.h"
#include "support/ProcessDeath.h"
#include "support/TemporaryRoot.h"

int daemonMain(int argc, char** argv);

namespace {

// The three times with which the adapter was told to listen, in seconds.
std::vector<unsigned int> listenedWith;
std::function<void()> whileListening;

} // namespace

// Arguments that are objects are passed as their addresses.
extern "C" void
__wrap__ZN3DAX6DAXIPC12DBUSLowLevel27DAXIPCServiceManagerAdapter10listenDBUSERKSt10shared_ptrINS_7Service15IServiceManager22IServiceManagerFactoryEEjjjN5boost8optionalISt8functionIFbvEEEENSB_ISC_IFvvEEEE(
    void* adapter, void* factory, unsigned int stopConditionInterval, unsigned int idleTimeout,
    unsigned int pingInterval, void* stopCondition, void* ping);

void __wrap__ZN3DAX6DAXIPC12DBUSLowLevel27DAXIPCServiceManagerAdapter10listenDBUSERKSt10shared_ptrINS_7Service15IServiceManager22IServiceManagerFactoryEEjjjN5boost8optionalISt8functionIFbvEEEENSB_ISC_IFvvEEEE(
    void*, void*, unsigned int stopConditionInterval, unsigned int idleTimeout, unsigned int pingInterval, void*,
    void*) {
    listenedWith = {stopConditionInterval, idleTimeout, pingInterval};
    if (whileListening) {
        whileListening();
    }
}

namespace DAX::Tests {
namespace {

using testing::ElementsAre;

class MainTest : public testing::Test {
protected:
    static int run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "DAXService");
        std::vector<char*> argv;
        for (std::string& argument : arguments) {
            argv.push_back(argument.data());
        }
        return daemonMain(static_cast<int>(argv.size()), argv.data());
    }

    const TemporaryRoot root;
};

TEST_F(MainTest, LooksForTheStopEveryThreeSecondsNeverGetsIdleAndPingsEveryTen) {
    EXPECT_IN_CHILD({
        EXPECT_EQ(run({}), 0);
        EXPECT_THAT(listenedWith, ElementsAre(3, 0, 10));
    });
}

TEST_F(MainTest, GetsIdleAfterTheTimeOfItsOption) {
    EXPECT_IN_CHILD({
        EXPECT_EQ(run({"--idle-timeout=30"}), 0);
        EXPECT_THAT(listenedWith, ElementsAre(3, 30, 10));
    });
}

TEST_F(MainTest, RegistersForThreeHundredSecondsBeforeItListens) {
    EXPECT_IN_CHILD({
        std::vector<std::string> before;
        whileListening = [&before] { before = FakeKovan::journal("hangguard"); };
        EXPECT_EQ(run({}), 0);
        EXPECT_THAT(before, ElementsAre("hangguard register 300"));
    });
}

TEST_F(MainTest, KeepsNoSmallPiecesOfFreedMemoryApart) {
    EXPECT_IN_CHILD({
        std::size_t keptApart = 1;
        whileListening = [&keptApart] {
            std::vector<void*> pieces(100);
            std::generate(pieces.begin(), pieces.end(), [] { return std::malloc(32); });
            std::for_each(pieces.begin(), pieces.end(), std::free);
            keptApart = mallinfo2().smblks;
        };
        EXPECT_EQ(run({}), 0);
        EXPECT_EQ(keptApart, 0U);
    });
}

} // namespace
} // namespace DAX::Tests
