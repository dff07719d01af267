#include "Platform/SystemAPI/TimerUtilsSystemAPI/BootClockInitializer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/SystemAPI/GMainLoopAPI/MainLoopSingleton.h"
#include "Utility/Utils/SingletonServiceGuard.h"
#include "Utility/Utils/UserDataRegister.h"
#include "support/FakeKovan.h"

namespace DAX::Tests {
namespace {

using namespace Common::Utils;
using Platform::BootClockInitializer;
using Platform::MainLoop::MainLoopSingleton;
using testing::ElementsAre;

class BootClockInitializerTest : public testing::Test {
protected:
    static std::vector<std::string> deletions() {
        std::vector<std::string> lines;
        for (const std::string& message : FakeKovan::messages("INF")) {
            if (message.find("will be deleted.") != std::string::npos) {
                lines.push_back(message);
            }
        }
        return lines;
    }
};

TEST_F(BootClockInitializerTest, IsTheSingletonOfItsId) {
    EXPECT_EQ(BootClockInitializer::getID(), SINGLETON_BOOTCLOCK_INITIALIZER);
    EXPECT_THAT(BootClockInitializer::getRequirements(), ElementsAre(G_MAIN_LOOP));
}

TEST_F(BootClockInitializerTest, StartsTheLibraryAndEndsIt) {
    {
        const auto initializer = SingletonsRegister::defaultFactory<BootClockInitializer>();
        EXPECT_EQ(initializer->getDAXTimerPriority(), 0);
        EXPECT_EQ(initializer->getWeekFlag(), 0);
        EXPECT_THAT(FakeKovan::journal(), ElementsAre("bootclock init"));
    }
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("bootclock init", "bootclock fini"));
}

TEST_F(BootClockInitializerTest, LivesOnWhenTheLibraryDoesNotStart) {
    for (const int result : {-1, 1}) {
        FakeKovan::reset();
        FakeKovan::setBootclockInitResult(result);
        SingletonsRegister::defaultFactory<BootClockInitializer>();
        EXPECT_THAT(FakeKovan::journal(),
                    ElementsAre("bootclock init", "log ERR bootclock_init failed", "bootclock fini"));
    }
}

TEST_F(BootClockInitializerTest, GoesBeforeTheMainLoopAndTheRegister) {
    {
        const SingletonServiceGuard<UserDataRegister> userData;
        const SingletonServiceGuard<MainLoopSingleton> mainLoop(MainLoopSingleton::create);
        const SingletonServiceGuard<BootClockInitializer> bootClock;
    }
    EXPECT_THAT(deletions(), ElementsAre("Singleton: SINGLETON_BOOTCLOCK_INITIALIZER will be deleted.",
                                         "Singleton: G_MAIN_LOOP will be deleted.",
                                         "Singleton: USER_DATA_REGISTER will be deleted."));
}

} // namespace
} // namespace DAX::Tests
