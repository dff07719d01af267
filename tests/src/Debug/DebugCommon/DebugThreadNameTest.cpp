#include "Debug/DebugCommon/DebugThreadName.h"

#include <sstream>
#include <string>

#include <boost/thread/barrier.hpp>
#include <boost/thread/thread.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include "FailingPrctl.h"
#include "support/ProcessDeath.h"

using DAX::Common::Debug::ThreadDebug;
using testing::ElementsAre;

namespace {

// The names as the system reports them, not the code under test.
std::string idOf(pthread_t thread) {
    std::ostringstream text;
    text << std::hex << thread;
    return text.str();
}

std::string nameOf(pthread_t thread) {
    char name[16] = "";
    EXPECT_EQ(pthread_getname_np(thread, name, sizeof(name)), 0);
    return name;
}

// Names the current thread without the code under test.
void nameThisThread(const char* name) {
    ASSERT_EQ(pthread_setname_np(pthread_self(), name), 0);
}

template <class Statement>
void inAnotherThread(Statement statement) {
    boost::thread thread(statement);
    thread.join();
}

// A thread that runs until this object is destroyed.
class WaitingThread {
public:
    WaitingThread() : m_thread([this] { m_end.wait(); }) {}
    ~WaitingThread() {
        m_end.wait();
        m_thread.join();
    }

    boost::thread& thread() { return m_thread; }

    std::string id() { return idOf(m_thread.native_handle()); }
    std::string name() { return nameOf(m_thread.native_handle()); }

private:
    boost::barrier m_end{2};
    boost::thread m_thread;
};

TEST(SetThreadNameTest, NamesTheCurrentThreadAndLogsIt) {
    inAnotherThread([] {
        ThreadDebug::SetThreadName("worker_1");

        EXPECT_EQ(nameOf(pthread_self()), "worker_1");
        EXPECT_THAT(FakeKovan::journal(),
                    ElementsAre("log INF Changed name of thread " + idOf(pthread_self()) + " to worker_1."));
    });
}

TEST(SetThreadNameTest, TakesTheSanitizedName) {
    inAnotherThread([] {
        ThreadDebug::SetThreadName("a worker");

        EXPECT_EQ(nameOf(pthread_self()), "a_worker");
        EXPECT_THAT(FakeKovan::messages("INF").at(0), testing::EndsWith(" to a_worker."));
    });
}

TEST(SetThreadNameTest, LetsTheSystemCutALongName) {
    inAnotherThread([] {
        ThreadDebug::SetThreadName("0123456789abcdefgh");

        EXPECT_EQ(nameOf(pthread_self()), "0123456789abcde");
        EXPECT_THAT(FakeKovan::messages("INF").at(0), testing::EndsWith(" to 0123456789abcdefgh."));
    });
}

TEST(SetThreadNameTest, LogsARefusalOfTheSystem) {
    EXPECT_IN_CHILD({
        ThreadDebug::registerMainThreadId(boost::this_thread::get_id());
        FakeKovan::reset();
        failPrctl();
        inAnotherThread([] { ThreadDebug::SetThreadName("a worker"); });

        EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR prctl Failed to give the name to thread: a_worker"));
    });
}

TEST(SetThreadNameTest, LeavesTheMainThreadsNameAlone) {
    EXPECT_IN_CHILD({
        nameThisThread("before");
        ThreadDebug::registerMainThreadId(boost::this_thread::get_id());
        FakeKovan::reset();
        ThreadDebug::SetThreadName("a worker");

        EXPECT_EQ(nameOf(pthread_self()), "before");
        EXPECT_THAT(FakeKovan::journal(), ElementsAre("log WRN Main thread name: a worker."));
    });
}

TEST(SetOtherThreadNameTest, NamesTheThreadAndLogsIt) {
    WaitingThread other;
    ThreadDebug::SetThreadName(other.thread(), "other worker");

    EXPECT_EQ(other.name(), "other_worker");
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF Changed name of thread " + other.id() + " to other_worker."));
}

TEST(SetOtherThreadNameTest, TakesANameOf15Characters) {
    WaitingThread other;
    ThreadDebug::SetThreadName(other.thread(), "0123456789abcde");

    EXPECT_EQ(other.name(), "0123456789abcde");
}

TEST(SetOtherThreadNameTest, LogsThatTheSystemRefusesANameOf16Characters) {
    WaitingThread other;
    const std::string before = other.name();
    ThreadDebug::SetThreadName(other.thread(), "0123456789abcdef");

    EXPECT_EQ(other.name(), before);
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log ERR pthread_setname_np Failed to give the name to thread: 0123456789abcdef"));
}

TEST(SetOtherThreadNameTest, LeavesTheMainThreadsNameAlone) {
    EXPECT_IN_CHILD({
        WaitingThread main;
        const std::string before = main.name();
        ThreadDebug::registerMainThreadId(main.thread().get_id());
        FakeKovan::reset();
        ThreadDebug::SetThreadName(main.thread(), "a worker");

        EXPECT_EQ(main.name(), before);
        EXPECT_THAT(FakeKovan::journal(), ElementsAre("log WRN Main thread name: a worker."));
    });
}

TEST(GetThreadNameTest, IsTheNameOfTheCurrentThread) {
    inAnotherThread([] {
        nameThisThread("worker 2");

        EXPECT_EQ(ThreadDebug::GetThreadName(), "worker 2");
        EXPECT_TRUE(FakeKovan::journal().empty());
    });
}

TEST(GetThreadNameTest, LogsAFailureAndReturnsAnEmptyName) {
    EXPECT_IN_CHILD({
        failPrctl();

        EXPECT_EQ(ThreadDebug::GetThreadName(), "");
        EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR prctl Failed to get the name of current thread"));
    });
}

TEST(RegisterMainThreadIdTest, LogsTheIdAndTheName) {
    EXPECT_IN_CHILD({
        nameThisThread("the main one");
        ThreadDebug::registerMainThreadId(boost::this_thread::get_id());

        EXPECT_THAT(FakeKovan::journal(),
                    ElementsAre("log INF Registering main thread id " + idOf(pthread_self()) + " named the main one."));
    });
}

TEST(RegisterMainThreadIdTest, AcceptsADefaultIdAndLogsThatItIsNoThread) {
    EXPECT_IN_CHILD({
        nameThisThread("the main one");
        ThreadDebug::registerMainThreadId(boost::thread::id());

        EXPECT_EQ(FakeKovan::messages("INF").at(0), "Registering main thread id {Not-any-thread} named the main one.");
    });
}

TEST(RegisterMainThreadIdTest, FailsAnAssertionWhenOneIsRegistered) {
    EXPECT_ASSERTION(
        {
            ThreadDebug::registerMainThreadId(boost::this_thread::get_id());
            ThreadDebug::registerMainThreadId(boost::this_thread::get_id());
        },
        "m_mainThreadId == boost::thread::id()");
}

TEST(SanitizeThreadNameTest, KeepsLettersDigitsAndUnderscores) {
    EXPECT_EQ(ThreadDebug::sanitizeThreadName("Worker_09azAZ"), "Worker_09azAZ");
    EXPECT_EQ(ThreadDebug::sanitizeThreadName(""), "");
}

TEST(SanitizeThreadNameTest, PutsAnUnderscoreInPlaceOfEachOtherCharacter) {
    EXPECT_EQ(ThreadDebug::sanitizeThreadName("a b  c-d.e/\xc3\xa4"), "a_b__c_d_e___");
}

TEST(SanitizeThreadNameTest, CutsNothing) {
    EXPECT_EQ(ThreadDebug::sanitizeThreadName("a name of more than 16 characters"),
              "a_name_of_more_than_16_characters");
}

} // namespace
