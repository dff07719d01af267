#include "Platform/SystemAPI/GMainLoopAPI/MainLoop.h"

#include <glib.h>

#include "Debug/DebugCommon/DebugThreadName.h"
#include "LoopFixture.h"
#include "support/Event.h"
#include "support/OtherThread.h"
#include "support/ProcessDeath.h"

namespace DAX::Tests {
namespace {

using namespace Platform::MainLoop;
using Common::Utils::SingletonServiceGuard;
using Common::Utils::UserDataRegister;
using testing::ElementsAre;
using testing::ElementsAreArray;

// The loop of the free functions, started.
class MainLoopTest : public LoopFixture {
protected:
    MainLoopTest() {
        initializeMainLoop();
        FakeKovan::forgetRecords();
    }

    // Runs the function on the loop's thread and waits for its end.
    static void runInLoop(const std::function<void()>& function) {
        Event done;
        const Registration registration([&] {
            function();
            done.happen();
            return 0;
        });
        mainLoop()->dispatchInMainLoop(registration.id());
        ASSERT_TRUE(done.wait());
    }
};

TEST_F(LoopFixture, StartsALoop) {
    initializeMainLoop();
    EXPECT_NE(getMainLoopTheadId(), boost::thread::id());
    EXPECT_THAT(FakeKovan::journal(), ElementsAreArray(startOf(getMainLoopTheadId())));
}

TEST_F(MainLoopTest, IsInitializedAfterItsStart) {
    EXPECT_TRUE(isMainLoopInitialized());
}

TEST(MainLoopGuardsTest, EndTheLoopBeforeTheRegisterOfUserData) {
    {
        const SingletonServiceGuard<UserDataRegister> userDataRegister;
        const SingletonServiceGuard<MainLoopSingleton> mainLoop(MainLoopSingleton::create);
        initializeMainLoop();
        FakeKovan::forgetRecords();
    }
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF Unmarking needed: singleton id: G_MAIN_LOOP",
                            "log INF Singleton: G_MAIN_LOOP will be deleted.", "log INF GLoopService closing.",
                            "log INF GLoopService::LoopThreadFunction(): Stopped.", "log INF GLoopService closed.",
                            "log INF Unmarking needed: singleton id: USER_DATA_REGISTER",
                            "log INF Unmarking needed: singleton id: USER_DATA_REGISTER",
                            "log INF Singleton: USER_DATA_REGISTER will be deleted."));
}

TEST_F(MainLoopTest, HasAThreadOfItsOwn) {
    boost::thread::id loop;
    runInLoop([&loop] { loop = boost::this_thread::get_id(); });
    EXPECT_EQ(loop, getMainLoopTheadId());
    EXPECT_NE(loop, boost::this_thread::get_id());
}

TEST_F(MainLoopTest, NamesItsThread) {
    std::string name;
    runInLoop([&name] { name = Common::Debug::ThreadDebug::GetThreadName(); });
    EXPECT_EQ(name, "GMainLoop_threa") << "a blank is no good in a name, and 15 characters are all";
}

TEST_F(MainLoopTest, RunsGLibsDefaultContext) {
    Event done;
    const Registration registration([&done] {
        EXPECT_TRUE(isRunningInMainLoop());
        done.happen();
        return 0;
    });
    g_idle_add(&UserDataRegister::GenericFunctorCallback<int()>::call<0>, registration.id());
    EXPECT_TRUE(done.wait());
}

TEST_F(MainLoopTest, KnowsWhetherItIsOnTheLoopsThread) {
    bool inLoop = false;
    runInLoop([&inLoop] { inLoop = isRunningInMainLoop(); });
    EXPECT_TRUE(inLoop);
    EXPECT_FALSE(isRunningInMainLoop());
    OtherThread([] { EXPECT_FALSE(isRunningInMainLoop()); }).finish();
}

TEST_F(MainLoopTest, CallsBackOnTheThreadThatTheRegisterExpects) {
    Event done;
    const Registration registration(
        [&done] {
            done.happen();
            return 0;
        },
        getMainLoopTheadId());
    mainLoop()->dispatchInMainLoop(registration.id());
    EXPECT_TRUE(done.wait());
}

TEST_F(MainLoopTest, ReplacesTheLoopWhenItIsInitializedAgain) {
    const boost::thread::id first = getMainLoopTheadId();
    initializeMainLoop();
    std::vector<std::string> expected = endOfALoop();
    for (const std::string& line : startOf(getMainLoopTheadId())) {
        expected.push_back(line);
    }
    EXPECT_THAT(FakeKovan::journal(), ElementsAreArray(expected)) << "of the loop after " << first;
    EXPECT_TRUE(isMainLoopInitialized());
    runInLoop([] { EXPECT_TRUE(isRunningInMainLoop()); });
}

// --- Without a guard, or without a start ----------------------------------------------------------------------------

const char NO_SINGLETON[] = "Singleton G_MAIN_LOOP does not exist.";

TEST(MainLoopWithoutAGuardTest, CannotBeInitialized) {
    EXPECT_ASSERTION_MSG(initializeMainLoop(), "0", NO_SINGLETON);
}

TEST(MainLoopWithoutAGuardTest, AnswersNoQuestion) {
    EXPECT_ASSERTION_MSG(isRunningInMainLoop(), "0", NO_SINGLETON);
    EXPECT_ASSERTION_MSG(isMainLoopInitialized(), "0", NO_SINGLETON);
    EXPECT_ASSERTION_MSG(getMainLoopTheadId(), "0", NO_SINGLETON);
}

TEST_F(LoopFixture, AnswersNoQuestionBeforeItsStart) {
    const char EXPRESSION[] = "m_implementation != nullptr";
    EXPECT_ASSERTION(isRunningInMainLoop(), EXPRESSION);
    EXPECT_ASSERTION(isMainLoopInitialized(), EXPRESSION);
    EXPECT_ASSERTION(getMainLoopTheadId(), EXPRESSION);
}

// --- The names of the users -----------------------------------------------------------------------------------------

// Withdraws the singleton in whichever operation is called.
struct Saboteur : MainLoopSingleton {
    static void sabotage() { theRegister().unmarkNeeded(MainLoopSingleton::getID()); }

    ~Saboteur() override { sabotage(); }
    bool isInitialized() const override {
        sabotage();
        return false;
    }
    boost::thread::id getMainLoopThreadId() const override {
        sabotage();
        return {};
    }
};

class MainLoopUserTest : public LoopFixture {
protected:
    // Runs in the process that dies of it.
    static void sabotage() { mainLoop()->setMainLoopImplementation(std::make_unique<Saboteur>()); }

    static std::string usedBy(const std::string& user) {
        return "Singleton (G_MAIN_LOOP=G_MAIN_LOOP) is still used by: [" + user + "]";
    }
};

TEST_F(MainLoopUserTest, InitializesUnderItsOwnName) {
    EXPECT_ASSERTION_MSG(
        {
            sabotage();
            initializeMainLoop();
        },
        "false", usedBy("initializeMainLoop"));
}

TEST_F(MainLoopUserTest, AsksForItsThreadUnderItsOwnName) {
    EXPECT_ASSERTION_MSG(
        {
            sabotage();
            isRunningInMainLoop();
        },
        "false", usedBy("isRunningInMainLoop"));
}

TEST_F(MainLoopUserTest, AsksForItsStartUnderItsOwnName) {
    EXPECT_ASSERTION_MSG(
        {
            sabotage();
            isMainLoopInitialized();
        },
        "false", usedBy("isMainLoopInitialized"));
}

TEST_F(MainLoopUserTest, GivesItsThreadIdUnderAShorterName) {
    EXPECT_ASSERTION_MSG(
        {
            sabotage();
            getMainLoopTheadId();
        },
        "false", usedBy("getMainLoopThead"));
}

} // namespace
} // namespace DAX::Tests
