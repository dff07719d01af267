#include "Platform/SystemAPI/GMainLoopAPI/Implementation/GLoopService.h"

#include <atomic>
#include <stdexcept>
#include <string>

#include <glib.h>

#include "LoopFixture.h"
#include "SlowStart.h"
#include "support/Event.h"
#include "support/NoThreads.h"
#include "support/OtherThread.h"
#include "support/ProcessDeath.h"
#include "support/Thrown.h"
#include "support/WaitUntil.h"

namespace DAX::Tests {
namespace {

using Platform::MainLoop::GLoopService;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::StartsWith;

const GSourceFunc CALL = &Common::Utils::UserDataRegister::GenericFunctorCallback<int()>::call<0>;

class GLoopServiceTest : public LoopFixture {
protected:
    // Runs what the loop has left over, so that it does not reach the loop of another test.
    ~GLoopServiceTest() override {
        service.reset();
        while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
        }
    }

    void start() {
        service->initialize();
        FakeKovan::forgetRecords();
    }

    // Has the function run on the loop's thread. The caller must wait for it.
    void dispatch(const Registration& registration) { service->dispatchInMainLoop(registration.id()); }

    std::string dispatchLine() const {
        return "log INF GLoopService::dispatchInMainLoop thread: " + inWords(service->getMainLoopThreadId());
    }

    std::unique_ptr<GLoopService> service = std::make_unique<GLoopService>();
};

// --- Start ----------------------------------------------------------------------------------------------------------

TEST_F(GLoopServiceTest, IsNotInitializedAtFirst) {
    EXPECT_FALSE(service->isInitialized());
    EXPECT_EQ(service->getMainLoopThreadId(), boost::thread::id());
    service.reset();
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(GLoopServiceTest, StartsItsThreadAndWaitsForNothing) {
    service->initialize();
    EXPECT_TRUE(service->isInitialized());
    EXPECT_THAT(FakeKovan::journal(), ElementsAreArray(startOf(service->getMainLoopThreadId())));
}

TEST_F(GLoopServiceTest, LogsOnItsThreadUnderItsName) {
    service->initialize();
    for (const FakeKovan::LogLine& line : FakeKovan::logLines()) {
        const bool onLoop = line.message.find("::LoopThreadFunction()") != std::string::npos;
        EXPECT_EQ(line.thread.find(" GMainLoop_threa") != std::string::npos,
                  onLoop || line.message.find("Changed name") == 0)
            << line.message;
    }
}

TEST_F(GLoopServiceTest, StartsNoSecondThread) {
    service->initialize();
    const boost::thread::id thread = service->getMainLoopThreadId();
    FakeKovan::forgetRecords();
    service->initialize();
    EXPECT_EQ(service->getMainLoopThreadId(), thread);
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(GLoopServiceTest, StartsOneThreadForManyCallers) {
    {
        std::vector<std::unique_ptr<OtherThread>> threads;
        for (int i = 0; i < 4; ++i) {
            threads.push_back(std::make_unique<OtherThread>([this] { service->initialize(); }));
        }
    }
    EXPECT_THAT(FakeKovan::journal(), ElementsAreArray(startOf(service->getMainLoopThreadId())));
}

std::vector<std::string> waitsOfAStart(int waits) {
    std::vector<std::string> entries;
    for (int i = 0; i < waits; ++i) {
        entries.insert(entries.end(),
                       {"look", "log INF GLoopService: Waiting for g_main_loop to start running...", "pause 100000"});
    }
    entries.push_back("look");
    return entries;
}

TEST_F(GLoopServiceTest, LooksAgainUntilTheLoopRuns) {
    const SlowStart slow(3);
    service->initialize();
    std::vector<std::string> expected = startOf(service->getMainLoopThreadId());
    const std::vector<std::string> waits = waitsOfAStart(3);
    expected.insert(expected.end() - 1, waits.begin(), waits.end());
    EXPECT_THAT(FakeKovan::journal(), ElementsAreArray(expected));
}

TEST_F(GLoopServiceTest, GoesOnAfterFiftyLooks) {
    {
        const SlowStart slow(1000);
        service->initialize();
    }
    std::vector<std::string> expected = startOf(service->getMainLoopThreadId());
    const std::vector<std::string> waits = waitsOfAStart(49);
    expected.insert(expected.end() - 1, waits.begin(), waits.end());
    EXPECT_THAT(FakeKovan::journal(), ElementsAreArray(expected));
    EXPECT_TRUE(service->isInitialized());
}

TEST_F(GLoopServiceTest, GoesOnWhileAnotherThreadHasTheContext) {
    ASSERT_TRUE(g_main_context_acquire(nullptr));
    service->initialize();
    EXPECT_THAT(FakeKovan::journal(), ElementsAreArray(startOf(service->getMainLoopThreadId())));

    boost::thread::id thread;
    Event done;
    const Registration registration([&] {
        thread = boost::this_thread::get_id();
        done.happen();
        return 0;
    });
    g_idle_add(CALL, registration.id());
    g_main_context_release(nullptr);
    ASSERT_TRUE(done.wait());
    EXPECT_EQ(thread, service->getMainLoopThreadId());
}

// A function that already waits in the context may ask for the thread before initialize() has returned.
TEST_F(GLoopServiceTest, KnowsItsThreadFromItsFirstCallback) {
    for (int i = 0; i < 50; ++i) {
        GLoopService loop;
        boost::thread::id known;
        boost::thread::id actual;
        Event done;
        const Registration registration([&] {
            known = loop.getMainLoopThreadId();
            actual = boost::this_thread::get_id();
            done.happen();
            return 0;
        });
        g_idle_add_full(G_PRIORITY_HIGH, CALL, registration.id(), nullptr);
        loop.initialize();
        ASSERT_TRUE(done.wait());
        EXPECT_EQ(known, actual);
    }
}

// --- Dispatch -------------------------------------------------------------------------------------------------------

TEST_F(GLoopServiceTest, RunsAFunctionOnItsThread) {
    start();
    Event done;
    boost::thread::id thread;
    const Registration registration([&] {
        thread = boost::this_thread::get_id();
        done.happen();
        return 0;
    });
    dispatch(registration);
    ASSERT_TRUE(done.wait());
    EXPECT_EQ(thread, service->getMainLoopThreadId());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(dispatchLine()));
}

TEST_F(GLoopServiceTest, DoesNotWaitForTheFunctionOnAnotherThread) {
    start();
    Event goOn;
    const Registration registration([&goOn] {
        EXPECT_TRUE(goOn.wait());
        return 0;
    });
    dispatch(registration);
    goOn.happen();
}

TEST_F(GLoopServiceTest, RunsTheFunctionAtOnceOnItsOwnThread) {
    start();
    Event done;
    const Registration inner([] {
        FakeKovan::note("inner");
        return 0;
    });
    const Registration outer([&] {
        dispatch(inner);
        FakeKovan::note("outer");
        done.happen();
        return 0;
    });
    dispatch(outer);
    ASSERT_TRUE(done.wait());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(dispatchLine(), dispatchLine(), "inner", "outer"));
}

TEST_F(GLoopServiceTest, RunsFunctionsInTheirOrder) {
    start();
    Event done;
    const Registration first([] {
        FakeKovan::note("first");
        return 0;
    });
    const Registration second([&done] {
        FakeKovan::note("second");
        done.happen();
        return 0;
    });
    dispatch(first);
    dispatch(first);
    dispatch(second);
    ASSERT_TRUE(done.wait());
    EXPECT_EQ(FakeKovan::journal("first").size(), 2u);
    EXPECT_EQ(FakeKovan::journal().back(), "second");
}

TEST_F(GLoopServiceTest, RunsAFunctionAgainUntilItReturnsZero) {
    start();
    Event done;
    int runs = 0;
    const Registration registration([&] {
        if (++runs < 3) {
            return 1;
        }
        done.happen();
        return 0;
    });
    dispatch(registration);
    ASSERT_TRUE(done.wait());
    service.reset();
    EXPECT_EQ(runs, 3);
}

TEST_F(GLoopServiceTest, RunsAFunctionOnTheCallersThreadWithoutALoop) {
    bool ran = false;
    const Registration registration([&ran] {
        ran = true;
        return 0;
    });
    dispatch(registration);
    EXPECT_TRUE(ran);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF GLoopService::dispatchInMainLoop thread: {Not-any-thread}"));
}

TEST_F(GLoopServiceTest, PassesOverAnIdThatIsNotRegistered) {
    start();
    service->dispatchInMainLoop(nullptr);
    ASSERT_TRUE(FakeKovan::waitForMessage("WRN", "The callback can not be called."));
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre(dispatchLine(), "log WRN The callback is not registered or removed. ID:  [nullptr]",
                            "log WRN The callback can not be called. ID:  [nullptr]"));
    Event done;
    const Registration registration([&done] {
        done.happen();
        return 0;
    });
    dispatch(registration);
    EXPECT_TRUE(done.wait()) << "the loop goes on";
}

TEST_F(GLoopServiceTest, EndsTheProcessWhenAFunctionThrows) {
    EXPECT_ASSERTION_MSG(
        {
            service->initialize();
            const Registration registration([]() -> int { throw std::domain_error("broken"); });
            dispatch(registration);
            Event().wait(); // for the end
        },
        "false", "Callbacks must not throw!");
}

TEST_F(GLoopServiceTest, TakesFunctionsOfManyThreads) {
    const int THREADS = 4;
    const int ROUNDS = 100;
    start();
    std::atomic<int> runs{0};
    int runsOfTheLoop = 0; // counted on its thread only
    const Registration registration([&] {
        ++runsOfTheLoop;
        ++runs;
        return 0;
    });
    {
        std::vector<std::unique_ptr<OtherThread>> threads;
        for (int i = 0; i < THREADS; ++i) {
            threads.push_back(std::make_unique<OtherThread>([&] {
                for (int round = 0; round < ROUNDS; ++round) {
                    dispatch(registration);
                }
            }));
        }
    }
    EXPECT_TRUE(waitUntil([&runs] { return runs == THREADS * ROUNDS; }));
    service.reset();
    EXPECT_EQ(runsOfTheLoop, THREADS * ROUNDS);
}

TEST_F(GLoopServiceTest, RunsAFunctionThatIsUnregisteredAtTheSameTimeOrSkipsIt) {
    start();
    for (int i = 0; i < 200; ++i) {
        const auto object = std::make_unique<int>(0);
        const Registration registration([&object] { return ++*object - *object; });
        dispatch(registration);
    }
}

// --- A callback of a user -------------------------------------------------------------------------------------------

TEST_F(GLoopServiceTest, MakesACallbackWithoutAFunction) {
    const auto callback = service->createUserRegisteredCallback();
    EXPECT_EQ(*static_cast<std::function<int()>*>(callback->getCallbackPtr()), nullptr);
}

void happen(void* event) {
    static_cast<Event*>(event)->happen(); // which may be once only
}

TEST_F(GLoopServiceTest, RunsACallbackOfAUserOnce) {
    start();
    Event event;
    const auto callback = service->createUserRegisteredCallback();
    callback->setCallback(happen, &event);
    auto reg = theRegister().getService<UserDataRegister>("test", UserDataRegister::getID());
    void* const id = reg->registerUserData(callback->getCallbackPtr(), service->getMainLoopThreadId());
    service->dispatchInMainLoop(id);
    ASSERT_TRUE(event.wait());
    service.reset();
    reg->unregisterUserData(id);
}

TEST_F(GLoopServiceTest, EndsTheProcessForACallbackWithoutAFunction) {
    EXPECT_ASSERTION_MSG(
        {
            service->initialize();
            const auto callback = service->createUserRegisteredCallback();
            auto reg = theRegister().getService<UserDataRegister>("test", UserDataRegister::getID());
            service->dispatchInMainLoop(reg->registerUserData(callback->getCallbackPtr(), boost::none));
            Event().wait(); // for the end
        },
        "false", "Callbacks must not throw!");
}

// --- Stop -----------------------------------------------------------------------------------------------------------

TEST_F(GLoopServiceTest, CannotStopWithoutAStart) {
    EXPECT_EQ(thrownDescription([this] { service->stop(); }), "GMainLoop not initialized!");
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(GLoopServiceTest, StopsItsThread) {
    start();
    service->stop();
    EXPECT_THAT(FakeKovan::journal(), ElementsAreArray(endOfALoop()));
    EXPECT_EQ(service->getMainLoopThreadId(), boost::thread::id());
    EXPECT_TRUE(service->isInitialized()) << "to the end of its life";
}

TEST_F(GLoopServiceTest, StopsAtItsEnd) {
    start();
    service.reset();
    EXPECT_THAT(FakeKovan::journal(), ElementsAreArray(endOfALoop()));
}

TEST_F(GLoopServiceTest, MayBeStoppedTwice) {
    start();
    service->stop();
    FakeKovan::forgetRecords();
    service->stop();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF GLoopService closing.", "log INF GLoopService closed."));
}

TEST_F(GLoopServiceTest, DoesNotStartAgain) {
    start();
    service->stop();
    FakeKovan::forgetRecords();
    service->initialize();
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
    EXPECT_EQ(service->getMainLoopThreadId(), boost::thread::id());
}

TEST_F(GLoopServiceTest, WaitsForARunningFunctionWhenItStops) {
    start();
    Event begun, goOn;
    const Registration registration([&] {
        begun.happen();
        EXPECT_TRUE(goOn.wait());
        FakeKovan::note("function ends");
        return 0;
    });
    dispatch(registration);
    ASSERT_TRUE(begun.wait());
    FakeKovan::forgetRecords();
    OtherThread stopping([this] { service->stop(); });
    EXPECT_TRUE(stopping.waitUntilItWaits());

    goOn.happen();

    stopping.finish();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF GLoopService closing.", "function ends",
                            "log INF GLoopService::LoopThreadFunction(): Stopped.", "log INF GLoopService closed."));
}

TEST_F(GLoopServiceTest, DoesNotStopALoopThatHasNotStarted) {
    start();
    {
        const SlowStart slow(3);
        service->stop();
    }
    std::vector<std::string> expected = {"log INF GLoopService closing."};
    for (int i = 0; i < 3; ++i) {
        expected.insert(expected.end(), {"look",
                                         "log INF GLoopService: Waiting for g_main_loop to start running before "
                                         "calling g_main_loop_quit.",
                                         "pause 1000000"});
    }
    expected.insert(expected.end(),
                    {"look", "log INF GLoopService::LoopThreadFunction(): Stopped.", "log INF GLoopService closed."});
    EXPECT_THAT(FakeKovan::journal(), ElementsAreArray(expected));
}

TEST_F(GLoopServiceTest, WaitsWithoutABoundForALoopToStart) {
    start();
    {
        const SlowStart slow(200);
        service->stop();
    }
    EXPECT_EQ(FakeKovan::journal("pause").size(), 200u);
}

TEST_F(GLoopServiceTest, IsNotInterruptedWhileItStops) {
    start();
    bool interruptedAfterwards = false;
    boost::thread stopping([&] {
        while (!boost::this_thread::interruption_requested()) {
            boost::this_thread::yield();
        }
        service->stop();
        interruptedAfterwards = boost::this_thread::interruption_requested();
    });
    stopping.interrupt();
    stopping.join();
    EXPECT_TRUE(interruptedAfterwards);
    EXPECT_THAT(FakeKovan::journal(), ElementsAreArray(endOfALoop()));
}

TEST_F(GLoopServiceTest, IsNotInterruptedAtItsEnd) {
    start();
    boost::thread ending([&] {
        while (!boost::this_thread::interruption_requested()) {
            boost::this_thread::yield();
        }
        service.reset();
    });
    ending.interrupt();
    ending.join();
    EXPECT_THAT(FakeKovan::journal(), ElementsAreArray(endOfALoop()));
}

TEST_F(GLoopServiceTest, WaitsForAStartThatHasBegunBeforeItStops) {
    Event begun, goOn;
    beforeTheNextStart([&] {
        begun.happen();
        EXPECT_TRUE(goOn.wait());
    });
    OtherThread starting([this] { service->initialize(); });
    ASSERT_TRUE(begun.wait());
    OtherThread stopping([this] { service->stop(); });
    EXPECT_TRUE(FakeKovan::waitForMessage("INF", "GLoopService: Waiting for g_main_loop to start running before "
                                                 "calling g_main_loop_quit."));
    EXPECT_EQ(FakeKovan::count("INF", "GLoopService closed."), 0);

    goOn.happen();

    starting.finish();
    stopping.finish();
    EXPECT_EQ(FakeKovan::count("INF", "GLoopService::LoopThreadFunction(): Stopped."), 1);
    EXPECT_EQ(FakeKovan::messages("INF").back(), "GLoopService closed.");
    EXPECT_EQ(service->getMainLoopThreadId(), boost::thread::id());
}

TEST_F(GLoopServiceTest, IsNotInitializedAfterAStartWithoutAThread) {
    {
        const NoThreads noThreads;
        EXPECT_THROW(service->initialize(), boost::thread_resource_error);
    }
    EXPECT_FALSE(service->isInitialized());
    EXPECT_EQ(thrownDescription([this] { service->stop(); }), "GMainLoop not initialized!");

    FakeKovan::forgetRecords();
    service->initialize();
    EXPECT_THAT(FakeKovan::journal(), ElementsAreArray(startOf(service->getMainLoopThreadId())));
}

TEST_F(GLoopServiceTest, EndsAStopThatWaitsForAStartThatFails) {
    Event begun, goOn;
    beforeTheNextStart([&] {
        begun.happen();
        EXPECT_TRUE(goOn.wait());
    });
    OtherThread starting([this] { EXPECT_THROW(service->initialize(), boost::thread_resource_error); });
    ASSERT_TRUE(begun.wait());
    OtherThread stopping([this] { service->stop(); });
    EXPECT_TRUE(FakeKovan::waitForMessage("INF", "GLoopService: Waiting for g_main_loop to start running before "
                                                 "calling g_main_loop_quit."));
    const NoThreads noThreads;

    goOn.happen();

    starting.finish();
    stopping.finish();
    EXPECT_EQ(FakeKovan::messages("INF").back(), "GLoopService closed.");
}

TEST_F(GLoopServiceTest, MayBeStoppedByManyThreadsAtOnce) {
    for (int i = 0; i < 20; ++i) {
        service = std::make_unique<GLoopService>();
        start();
        const boost::thread::id thread = service->getMainLoopThreadId();
        {
            std::vector<std::unique_ptr<OtherThread>> threads;
            for (int j = 0; j < 3; ++j) {
                threads.push_back(std::make_unique<OtherThread>([this] {
                    service->stop();
                    EXPECT_EQ(service->getMainLoopThreadId(), boost::thread::id());
                }));
            }
            const boost::thread::id seen = service->getMainLoopThreadId();
            EXPECT_TRUE(seen == thread || seen == boost::thread::id());
        }
        EXPECT_EQ(FakeKovan::count("INF", "GLoopService closed."), 3);
        EXPECT_EQ(FakeKovan::count("INF", "GLoopService::LoopThreadFunction(): Stopped."), 1);
    }
}

TEST_F(GLoopServiceTest, MayBeStoppedOnItsOwnThreadWhileAnotherThreadStopsIt) {
    start();
    Event begun, goOn;
    const Registration registration([&] {
        begun.happen();
        EXPECT_TRUE(goOn.wait());
        EXPECT_THROW(service->stop(), boost::thread_resource_error);
        return 0;
    });
    dispatch(registration);
    ASSERT_TRUE(begun.wait());
    OtherThread stopping([this] { service->stop(); });
    EXPECT_TRUE(stopping.waitUntilItWaits());

    goOn.happen();

    stopping.finish();
    EXPECT_EQ(FakeKovan::count("INF", "GLoopService closed."), 1);
}

// --- The end on its own thread --------------------------------------------------------------------------------------

TEST_F(GLoopServiceTest, CannotWaitForItselfWhenItStopsOnItsOwnThread) {
    start();
    std::string thrown;
    const Registration registration([&] {
        try {
            service->stop();
        } catch (const boost::thread_resource_error& error) {
            thrown = error.what();
        }
        return 0;
    });
    dispatch(registration);
    ASSERT_TRUE(FakeKovan::waitForMessage("INF", "GLoopService::LoopThreadFunction(): Stopped."));
    EXPECT_THAT(thrown, StartsWith("boost thread: trying joining itself"));
    EXPECT_EQ(FakeKovan::count("INF", "GLoopService closed."), 0);
}

TEST_F(GLoopServiceTest, MayBeStoppedTwiceOnItsOwnThread) {
    start();
    const Registration registration([&] {
        EXPECT_THROW(service->stop(), boost::thread_resource_error);
        EXPECT_THROW(service->stop(), boost::thread_resource_error);
        return 0;
    });
    dispatch(registration);
    EXPECT_TRUE(FakeKovan::waitForMessage("INF", "GLoopService::LoopThreadFunction(): Stopped."));
}

TEST_F(GLoopServiceTest, MayEndAfterItWasStoppedOnItsOwnThread) {
    start();
    const Registration registration([this] {
        EXPECT_THROW(service->stop(), boost::thread_resource_error);
        return 0;
    });
    dispatch(registration);
    ASSERT_TRUE(FakeKovan::waitForMessage("INF", "GLoopService::LoopThreadFunction(): Stopped."));
    FakeKovan::forgetRecords();
    service.reset();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF GLoopService closing.", "log INF GLoopService closed."));
}

TEST_F(GLoopServiceTest, LogsThatItCannotWaitForItselfWhenItEndsOnItsOwnThread) {
    start();
    Event dispatched;
    const Registration registration([&] {
        EXPECT_TRUE(dispatched.wait());
        service.reset();
        return 0;
    });
    dispatch(registration);
    dispatched.happen();
    ASSERT_TRUE(FakeKovan::waitForMessage("INF", "GLoopService::LoopThreadFunction(): Stopped."));
    EXPECT_EQ(service, nullptr);
    EXPECT_EQ(FakeKovan::count("INF", "GLoopService closing."), 1);
    EXPECT_EQ(FakeKovan::count("INF", "GLoopService closed."), 0);
    std::string logged;
    for (const std::string& line : FakeKovan::messages("ERR")) {
        logged += line + "\n";
    }
    EXPECT_THAT(logged, StartsWith("Exception was caught in GLoopService: "));
    EXPECT_THAT(logged, testing::HasSubstr("boost thread: trying joining itself"));
}

} // namespace
} // namespace DAX::Tests
