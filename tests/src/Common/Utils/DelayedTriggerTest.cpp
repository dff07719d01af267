#include "Common/Utils/DelayedTrigger.h"

#include <algorithm>
#include <atomic>
#include <future>
#include <iterator>
#include <memory>
#include <new>
#include <thread>
#include <utility>

#include <boost/exception/get_error_info.hpp>
#include <boost/filesystem/operations.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Debug/DebugCommon/DebugThreadName.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"
#include "support/Event.h"
#include "support/FakeKovan.h"
#include "support/OtherThread.h"
#include "support/TestClock.h"
#include "support/WaitUntil.h"

using namespace DAX::Common::Utils;
using boost::chrono::hours;
using boost::chrono::milliseconds;
using DAX::Common::Debug::ThreadDebug;
using DAX::Tests::begunTimedWaits;
using DAX::Tests::Event;
using DAX::Tests::OtherThread;
using DAX::Tests::TestClock;
using DAX::Tests::timedOutWaits;
using DAX::Tests::waitUntil;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

using namespace std::chrono_literals;

namespace {

const milliseconds AT_ONCE(0);

TEST(DelayedTriggerTest, RunsTheActionWhenTheDeadlineHasPassed) {
    TestClock clock;
    Event done;
    DelayedTrigger trigger("bus");
    trigger.arm(milliseconds(30), [&done] { done.happen(); });
    clock.pass(29ms);
    ASSERT_TRUE(clock.isAwaited());
    EXPECT_FALSE(done.happened());
    clock.pass(1ms);

    EXPECT_TRUE(done.wait());
}

TEST(DelayedTriggerTest, RunsTheActionOnAThreadNamedAfterIt) {
    std::promise<std::string> name;
    DelayedTrigger trigger("bus");
    trigger.arm(AT_ONCE, [&name] { name.set_value(ThreadDebug::GetThreadName()); });

    EXPECT_EQ(name.get_future().get(), "bus_DelayedTrig") << "a blank is no good in a name, and 15 characters are all";
    EXPECT_THAT(FakeKovan::messages("INF").at(0), MatchesRegex("Changed name of thread .* to bus_DelayedTrigger\\."));
}

TEST(DelayedTriggerTest, RunsAnActionOncePerArming) {
    int runs = 0;
    {
        DelayedTrigger trigger("bus");
        for (int i = 0; i < 3; ++i) {
            Event done;
            trigger.arm(AT_ONCE, [&] {
                ++runs;
                done.happen();
            });
            ASSERT_TRUE(done.wait());
        }
    }
    EXPECT_EQ(runs, 3);
}

TEST(DelayedTriggerTest, DoesNotRunACancelledAction) {
    std::atomic<bool> ran{false};
    Event other;
    DelayedTrigger trigger("bus");
    trigger.arm(hours(1), [&ran] { ran = true; });
    trigger.cancel();
    trigger.arm(AT_ONCE, [&other] { other.happen(); });

    ASSERT_TRUE(other.wait());
    EXPECT_FALSE(ran);
}

TEST(DelayedTriggerTest, ForgetsACancelledAction) {
    DelayedTrigger trigger("bus");
    auto held = std::make_shared<int>();
    const std::weak_ptr<int> observed = held;
    trigger.arm(hours(1), [held = std::move(held)] {});
    trigger.cancel();

    EXPECT_TRUE(observed.expired());
}

TEST(DelayedTriggerTest, TakesTheNewestActionAndItsDeadline) {
    std::atomic<bool> olderRan{false};
    Event newer;
    DelayedTrigger trigger("bus");
    trigger.arm(hours(1), [&olderRan] { olderRan = true; });
    trigger.arm(AT_ONCE, [&newer] { newer.happen(); });

    ASSERT_TRUE(newer.wait());
    EXPECT_FALSE(olderRan);
}

// The older action is destroyed with the trigger's mutex held, so the waiting thread cannot see the newer action before
// its wait has timed out.
TEST(DelayedTriggerTest, WaitsForTheNewDeadlineWhenItIsArmedAgainWhileItTimesOut) {
    TestClock clock;
    Event done;
    DelayedTrigger trigger("bus");
    const int timedOut = timedOutWaits();
    std::shared_ptr<void> untilTimedOut(nullptr, [&clock, timedOut](void*) {
        clock.pass(200ms);
        EXPECT_TRUE(waitUntil([timedOut] { return timedOutWaits() > timedOut; }));
    });
    trigger.arm(milliseconds(200), [held = std::move(untilTimedOut)] {});
    ASSERT_TRUE(clock.isAwaited());
    const int begun = begunTimedWaits();
    trigger.arm(milliseconds(300), [&done] { done.happen(); });

    ASSERT_TRUE(waitUntil([&] { return done.happened() || begunTimedWaits() > begun; }));
    EXPECT_FALSE(done.happened()) << "it did not look at the new deadline";
    clock.pass(100ms);
    EXPECT_TRUE(done.wait());
}

TEST(DelayedTriggerTest, LetsTheActionCallBackIntoIt) {
    Event second;
    DelayedTrigger trigger("bus");
    trigger.arm(AT_ONCE, [&] {
        trigger.cancel();
        trigger.arm(AT_ONCE, [&second] { second.happen(); });
    });

    EXPECT_TRUE(second.wait());
}

TEST(DelayedTriggerTest, CancellingWaitsForARunningAction) {
    Event started;
    Event mayFinish;
    DelayedTrigger trigger("bus");
    trigger.arm(AT_ONCE, [&] {
        started.happen();
        mayFinish.wait();
    });
    ASSERT_TRUE(started.wait());
    OtherThread canceller([&trigger] { trigger.cancel(); });

    EXPECT_TRUE(canceller.waitUntilItWaits());
    mayFinish.happen();
    EXPECT_NO_THROW(canceller.finish());
}

TEST(DelayedTriggerTest, DestroyingItEndsTheThreadWithoutTheActionAndWithoutALogLine) {
    bool ran = false;
    {
        DelayedTrigger trigger("bus");
        trigger.arm(hours(1), [&ran] { ran = true; });
        ASSERT_TRUE(FakeKovan::waitForMessage("INF", "Changed name"));
        FakeKovan::reset();
    }
    EXPECT_FALSE(ran);
    EXPECT_TRUE(FakeKovan::journal().empty());
}

int threads() {
    const boost::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<int>(std::distance(tasks, boost::filesystem::directory_iterator()));
}

// A trigger in memory that is overwritten with garbage after the trigger is destroyed.
class MortalTrigger {
public:
    ~MortalTrigger() {
        EXPECT_TRUE(waitUntil([this] { return threads() == m_threads; }));
    }

    DelayedTrigger& operator*() { return *m_trigger; }

    void destroy() {
        m_trigger->~DelayedTrigger();
        std::fill(std::begin(m_memory), std::end(m_memory), 0xFF);
    }

private:
    const int m_threads = (std::thread([] {}).join(), threads()); // the thread sanitizer has one of its own by then
    alignas(DelayedTrigger) unsigned char m_memory[sizeof(DelayedTrigger)];
    DelayedTrigger* const m_trigger = new (m_memory) DelayedTrigger("bus");
};

TEST(DelayedTriggerTest, MayBeDestroyedByItsAction) {
    bool secondRan = false;
    {
        MortalTrigger trigger;
        Event destroyed;
        (*trigger).arm(AT_ONCE, [&] {
            (*trigger).arm(AT_ONCE, [&secondRan] { secondRan = true; });
            trigger.destroy();
            destroyed.happen();
        });
        ASSERT_TRUE(destroyed.wait());
    }
    EXPECT_FALSE(secondRan);
    EXPECT_TRUE(FakeKovan::messages("FTL").empty());
}

TEST(DelayedTriggerTest, LogsTheFailureOfAnActionThatDestroyedIt) {
    {
        MortalTrigger trigger;
        Event destroyed;
        (*trigger).arm(AT_ONCE, [&] {
            trigger.destroy();
            destroyed.happen();
            DAX_THROW(GenericException(), "bad action");
        });
        ASSERT_TRUE(destroyed.wait());
    }
    EXPECT_EQ(FakeKovan::countContaining("FTL", "Exception caught in DelayedTrigger(bus) waiting thread: "), 1);
}

TEST(DelayedTriggerTest, IsDestroyedCompletelyOnAnInterruptedThread) {
    Event interrupted;
    bool stillToBeInterrupted = false;
    boost::thread owner([&] {
        {
            DelayedTrigger trigger("bus");
            interrupted.wait();
        }
        stillToBeInterrupted = boost::this_thread::interruption_requested();
    });
    owner.interrupt();
    interrupted.happen();
    owner.join();

    EXPECT_TRUE(stillToBeInterrupted);
}

TEST(DelayedTriggerTest, AnInterruptionInTheActionEndsTheThreadWithoutALogLine) {
    Event ran;
    {
        DelayedTrigger trigger("bus");
        trigger.arm(AT_ONCE, [&ran] {
            ran.happen();
            throw boost::thread_interrupted();
        });
        ASSERT_TRUE(ran.wait());
        EXPECT_NO_THROW(trigger.cancel());
    }
    EXPECT_TRUE(FakeKovan::messages("FTL").empty());
}

// A trigger whose waiting thread has failed.
class FailedDelayedTriggerTest : public testing::Test {
protected:
    FailedDelayedTriggerTest() {
        m_trigger->arm(AT_ONCE, [] { DAX_THROW(GenericException(), "bad action"); });
        EXPECT_TRUE(waitUntil([this] { return !rethrown([this] { m_trigger->throwIfException(); }).empty(); }));
    }

    // The texts that were added to the failure that the call rethrows; empty when it throws nothing.
    template <class Call>
    static std::string rethrown(Call call) {
        try {
            call();
        } catch (const GenericException& exception) {
            EXPECT_EQ(*boost::get_error_info<errinfo_stream_text>(exception), "bad action");
            return *boost::get_error_info<errinfo_rethrows>(exception);
        }
        return "";
    }

    std::unique_ptr<DelayedTrigger> m_trigger = std::make_unique<DelayedTrigger>("bus");
};

TEST_F(FailedDelayedTriggerTest, LogsTheFailureWithItsDiagnosticText) {
    ASSERT_EQ(FakeKovan::countContaining("FTL", "Exception caught in DelayedTrigger(bus) waiting thread: "), 1);
    EXPECT_EQ(FakeKovan::countContaining("FTL", "GenericException"), 1);
    EXPECT_EQ(FakeKovan::countContaining("FTL", "tag_errinfo_stream*] = bad action"), 1);
}

TEST_F(FailedDelayedTriggerTest, RethrowsItFromEveryLaterArmAndCancel) {
    for (int i = 0; i < 2; ++i) {
        EXPECT_NE(rethrown([this] { m_trigger->arm(AT_ONCE, [] {}); }), "");
        EXPECT_NE(rethrown([this] { m_trigger->cancel(); }), "");
    }
}

TEST_F(FailedDelayedTriggerTest, AddsTheRethrowingPlaceToTheFailure) {
    const std::string added = rethrown([this] { m_trigger->cancel(); });

    const std::string newest = added.substr(0, added.find('\n'));
    EXPECT_THAT(newest,
                MatchesRegex(" -> .*DelayedTrigger::throwIfException\\(\\) \\(/.*/DelayedTrigger\\.cpp:[0-9]+\\) "));
}

TEST_F(FailedDelayedTriggerTest, AddsNothingToTheStoredFailureWhenItRethrowsIt) {
    const std::string first = rethrown([this] { m_trigger->cancel(); });
    const std::string second = rethrown([this] { m_trigger->cancel(); });

    EXPECT_EQ(second, first);
    EXPECT_EQ(first.find('\n'), std::string::npos) << first;
}

TEST_F(FailedDelayedTriggerTest, LogsTheFailureOnceMoreWhenItIsDestroyed) {
    FakeKovan::reset();
    m_trigger.reset();

    const std::vector<std::string> messages = FakeKovan::messages("FTL");
    ASSERT_FALSE(messages.empty());
    EXPECT_THAT(messages[0], StartsWith("Exception was caught in DelayedTrigger(bus): "));
    EXPECT_EQ(FakeKovan::countContaining("FTL", "tag_errinfo_stream*] = bad action"), 1);
}

TEST(DelayedTriggerTest, KeepsAFailureThatIsNoBoostException) {
    DelayedTrigger trigger("bus");
    trigger.arm(AT_ONCE, [] { throw std::runtime_error("plain"); });
    const auto throws = [&trigger] {
        try {
            trigger.throwIfException();
            return false;
        } catch (const std::runtime_error& exception) {
            return std::string(exception.what()) == "plain";
        }
    };

    EXPECT_TRUE(waitUntil(throws));
    EXPECT_EQ(FakeKovan::countContaining("FTL", "waiting thread: "), 1);
}

} // namespace
