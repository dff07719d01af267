#include "Platform/SystemAPI/GMainLoopAPI/MainLoopSingleton.h"

#include <cstdint>

#include "LoopFixture.h"
#include "support/ProcessDeath.h"
#include "support/Slots.h"

namespace DAX::Tests {
namespace {

using Platform::MainLoop::UserRegisteredCallback;
using testing::ElementsAre;
using testing::IsEmpty;

// Records each call.
class NotingLoop : public Platform::MainLoop::MainLoopSingleton {
public:
    explicit NotingLoop(std::string name = "loop") : m_name(std::move(name)) {}
    ~NotingLoop() override { FakeKovan::note(m_name + " ends"); }

    void initialize() override { FakeKovan::note(m_name + " initialize"); }
    bool isInitialized() const override {
        FakeKovan::note(m_name + " isInitialized");
        return true;
    }
    boost::thread::id getMainLoopThreadId() const override {
        FakeKovan::note(m_name + " getMainLoopThreadId");
        return boost::this_thread::get_id();
    }
    void dispatchInMainLoop(void* data) override {
        FakeKovan::note(m_name + " dispatchInMainLoop " + std::to_string(reinterpret_cast<std::uintptr_t>(data)));
    }
    std::unique_ptr<UserRegisteredCallback> createUserRegisteredCallback() override {
        FakeKovan::note(m_name + " createUserRegisteredCallback");
        return std::make_unique<UserRegisteredCallback>();
    }

private:
    const std::string m_name;
};

class MainLoopSingletonTest : public LoopFixture {
protected:
    static void put(std::unique_ptr<MainLoopSingleton> implementation) {
        mainLoop()->setMainLoopImplementation(std::move(implementation));
    }
};

TEST_F(MainLoopSingletonTest, HasItsIdAndRequiresTheRegisterOfUserData) {
    EXPECT_EQ(MainLoopSingleton::getID(), Common::Utils::G_MAIN_LOOP);
    EXPECT_THAT(MainLoopSingleton::getRequirements(), ElementsAre(Common::Utils::USER_DATA_REGISTER));
}

// The fixture's guards and two more needs make four needs of the register of user data.
TEST_F(MainLoopSingletonTest, NeedsTheRegisterOfUserDataOnceForEachNeedOfItself) {
    EXPECT_IN_CHILD({
        for (int i = 0; i < 2; ++i) {
            theRegister().markNeeded<MainLoopSingleton>(MainLoopSingleton::getID(), nullptr);
        }
        for (int i = 0; i < 3; ++i) {
            theRegister().unmarkNeeded(UserDataRegister::getID());
        }
        EXPECT_EQ(FakeKovan::countContaining("INF", "will be deleted."), 0);
        theRegister().unmarkNeeded(UserDataRegister::getID());
        EXPECT_EQ(FakeKovan::count("INF", "Singleton: USER_DATA_REGISTER will be deleted."), 1);
    });
}

TEST_F(MainLoopSingletonTest, BringsTheNeedsOfTheRegisterOfUserDataBack) {
    EXPECT_IN_CHILD({
        for (int i = 0; i < 2; ++i) {
            theRegister().markNeeded<MainLoopSingleton>(MainLoopSingleton::getID(), nullptr);
        }
        for (int i = 0; i < 2; ++i) {
            theRegister().unmarkNeeded(MainLoopSingleton::getID());
        }
        theRegister().unmarkNeeded(UserDataRegister::getID());
        EXPECT_EQ(FakeKovan::countContaining("INF", "will be deleted."), 0);
        theRegister().unmarkNeeded(UserDataRegister::getID());
        EXPECT_EQ(FakeKovan::count("INF", "Singleton: USER_DATA_REGISTER will be deleted."), 1);
    });
}

TEST_F(MainLoopSingletonTest, MayNotBeMadeWithoutTheRegisterOfUserData) {
    EXPECT_ASSERTION_MSG(
        {
            theRegister().unmarkNeeded(MainLoopSingleton::getID());
            theRegister().unmarkNeeded(UserDataRegister::getID());
            const Guard<MainLoopSingleton> guard(MainLoopSingleton::create);
        },
        "0", "Cannot meet requirements of given singleton. Cannot find singletons required by given singleton.");
}

TEST_F(MainLoopSingletonTest, PassesEachOperationOn) {
    put(std::make_unique<NotingLoop>());
    mainLoop()->initialize();
    EXPECT_TRUE(mainLoop()->isInitialized());
    EXPECT_EQ(mainLoop()->getMainLoopThreadId(), boost::this_thread::get_id());
    mainLoop()->dispatchInMainLoop(reinterpret_cast<void*>(5));
    EXPECT_NE(mainLoop()->createUserRegisteredCallback(), nullptr);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("loop initialize", "loop isInitialized", "loop getMainLoopThreadId",
                                                  "loop dispatchInMainLoop 5", "loop createUserRegisteredCallback"));
}

TEST_F(MainLoopSingletonTest, DestroysTheEarlierImplementation) {
    put(std::make_unique<NotingLoop>("first"));
    put(std::make_unique<NotingLoop>("second"));
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("first ends"));
    mainLoop()->initialize();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("first ends", "second initialize"));
}

TEST_F(MainLoopSingletonTest, DestroysItsImplementationAtItsEnd) {
    {
        const auto singleton = MainLoopSingleton::create();
        dynamic_cast<MainLoopSingleton&>(*singleton).setMainLoopImplementation(std::make_unique<NotingLoop>());
        EXPECT_THAT(FakeKovan::journal(), IsEmpty());
    }
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("loop ends"));
}

// --- Without an implementation --------------------------------------------------------------------------------------

const char NO_IMPLEMENTATION[] = "m_implementation != nullptr";

TEST_F(MainLoopSingletonTest, HasNoImplementationAtFirst) {
    EXPECT_ASSERTION(mainLoop()->initialize(), NO_IMPLEMENTATION);
    EXPECT_ASSERTION(mainLoop()->isInitialized(), NO_IMPLEMENTATION);
    EXPECT_ASSERTION(mainLoop()->getMainLoopThreadId(), NO_IMPLEMENTATION);
    EXPECT_ASSERTION(mainLoop()->dispatchInMainLoop(nullptr), NO_IMPLEMENTATION);
    EXPECT_ASSERTION(mainLoop()->createUserRegisteredCallback(), NO_IMPLEMENTATION);
}

TEST_F(MainLoopSingletonTest, HasNoImplementationAfterItWasTakenOut) {
    put(std::make_unique<NotingLoop>());
    put(nullptr);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("loop ends"));
    EXPECT_ASSERTION(mainLoop()->initialize(), NO_IMPLEMENTATION);
}

TEST(MainLoopSingletonSlots, StandInTheirOrder) {
    using Loop = Platform::MainLoop::MainLoopSingleton;
    EXPECT_EQ(slotsOf(&Loop::initialize, &Loop::isInitialized, &Loop::getMainLoopThreadId, &Loop::dispatchInMainLoop,
                      &Loop::createUserRegisteredCallback),
              slotsBehindTheDestructor(5));
}

} // namespace
} // namespace DAX::Tests
