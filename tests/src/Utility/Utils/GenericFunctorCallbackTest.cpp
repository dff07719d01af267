#include <atomic>
#include <cstdlib>
#include <functional>
#include <memory>
#include <stdexcept>
#include <vector>

#include "UserDataFixture.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"
#include "support/Event.h"
#include "support/OtherThread.h"
#include "support/ProcessDeath.h"

namespace DAX::Tests {
namespace {

using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

template <class Signature>
using Trampoline = Common::Utils::UserDataRegister::GenericFunctorCallback<Signature>;

// What a C interface gets, with an id. It returns -1 when it cannot call.
int call(int argument, void* id) {
    int (*const trampoline)(int, void*) = &Trampoline<int(int)>::call<-1>;
    return trampoline(argument, id);
}

// What is registered under an id.
class GenericFunctorCallbackTest : public UserDataFixture {
protected:
    using Function = std::function<int(int)>;

    ~GenericFunctorCallbackTest() override {
        if (m_registered) {
            unregister(m_id);
        }
    }

    void* registered(const Function& newFunction, const boost::optional<boost::thread::id>& executor = boost::none) {
        function = newFunction;
        m_id = registerData(&function, executor);
        m_registered = true;
        return m_id;
    }
    void unregisterIt() {
        m_registered = false;
        unregister(m_id);
    }

    Function function;

private:
    void* m_id = nullptr;
    bool m_registered = false;
};

int increment(int number) {
    return number + 1;
}

TEST_F(GenericFunctorCallbackTest, CallsTheFunctionAndGivesItsResult) {
    EXPECT_EQ(call(41, registered(increment)), 42);
    EXPECT_THAT(FakeKovan::logLines(), IsEmpty());
}

TEST_F(GenericFunctorCallbackTest, PassesAnyArguments) {
    std::function<long(int, const char*, double&)> sum = [](int a, const char* b, double& c) {
        c = 0.5;
        return a + std::atol(b);
    };
    void* const id = registerData(&sum);
    double c = 0;
    EXPECT_EQ((Trampoline<long(int, const char*, double&)>::call<0>(40, "2", c, id)), 42);
    EXPECT_EQ(c, 0.5);
    unregister(id);
}

TEST_F(GenericFunctorCallbackTest, NeedsNoArguments) {
    std::function<bool()> yes = [] { return true; };
    void* const id = registerData(&yes);
    EXPECT_TRUE(Trampoline<bool()>::call<false>(id));
    unregister(id);
}

TEST_F(GenericFunctorCallbackTest, CallsTheFunctionThatIsThereAtTheTime) {
    void* const id = registered(increment);
    function = [](int number) { return -number; };
    EXPECT_EQ(call(41, id), -41);
}

TEST_F(GenericFunctorCallbackTest, CallsACopyOfTheFunction) {
    const auto state = std::make_shared<int>(5);
    const std::weak_ptr<int> observed = state;
    void* const id = registered([this, state](int number) {
        function = nullptr; // the running function must not be destroyed
        return number + *state;
    });
    EXPECT_EQ(call(1, id), 6);
    EXPECT_EQ(observed.use_count(), 1) << "the copy goes with the call";
}

// --- An id that cannot be called -----------------------------------------------------------------------------------

TEST_F(GenericFunctorCallbackTest, GivesItsOwnValueForAnIdThatIsUnregistered) {
    {
        std::function<int(int)> gone = increment;
        unregister(registerData(&gone));
    }
    EXPECT_EQ(call(41, id(1)), -1);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log WRN The callback is not registered or removed. ID:  0x1",
                                                  "log WRN The callback can not be called. ID:  0x1"));
}

TEST_F(GenericFunctorCallbackTest, GivesItsOwnValueForTheNullId) {
    EXPECT_EQ(call(41, nullptr), -1);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log WRN The callback is not registered or removed. ID:  [nullptr]",
                                                  "log WRN The callback can not be called. ID:  [nullptr]"));
}

TEST_F(GenericFunctorCallbackTest, HasAValueOfItsOwnForEachUse) {
    EXPECT_EQ(Trampoline<int()>::call<>(id(1)), 0);
    EXPECT_EQ(Trampoline<int()>::call<7>(id(1)), 7);
    EXPECT_EQ(Trampoline<bool()>::call<true>(id(1)), true);
}

TEST_F(GenericFunctorCallbackTest, EndsTheProcessWithoutARegister) {
    EXPECT_ASSERTION_MSG(
        {
            unmark<UserDataRegister>();
            call(1, id(1));
        },
        "0", "Singleton USER_DATA_REGISTER does not exist.");
}

// --- A function that throws ----------------------------------------------------------------------------------------

const char NO_THROW[] = "Callbacks must not throw!";

TEST_F(GenericFunctorCallbackTest, EndsTheProcessWhenTheFunctionThrows) {
    void* const id = registered([](int) -> int { throw std::domain_error("broken"); });
    EXPECT_ASSERTION_MSG(call(1, id), "false", NO_THROW);
}

TEST_F(GenericFunctorCallbackTest, LogsWhatTheFunctionThrewBeforeItEndsTheProcess) {
    void* const id = registered([](int) -> int {
        DAX_THROW(Common::Utils::GenericException(), Common::Utils::errinfo_description("no such thing"));
    });
    EXPECT_EXIT(
        {
            FakeKovan::echoLogToStderr(true);
            call(1, id);
        },
        testing::KilledBySignal(SIGABRT),
        ContainsRegex("\\[FTL\\] UserDataRegister\\.h:[0-9]+>Exception caught during GenericFunctorCallback:(.*\n)*"
                      ".*GenericException.*\n(.*\n)*"
                      ".*tag_errinfo_description\\*\\] = no such thing\n(.*\n)*"
                      ".*ASSERTION FAILED: false, "));
}

TEST_F(GenericFunctorCallbackTest, LogsTheTypeOfAnUnknownException) {
    void* const id = registered([](int) -> int { throw 5; });
    EXPECT_EXIT(
        {
            FakeKovan::echoLogToStderr(true);
            call(1, id);
        },
        testing::KilledBySignal(SIGABRT),
        HasSubstr(">Exception caught during GenericFunctorCallback:Dynamic exception type: int\n"));
}

TEST_F(GenericFunctorCallbackTest, EndsTheProcessWhenTheFunctionIsInterrupted) {
    void* const id = registered([](int) -> int { throw boost::thread_interrupted(); });
    EXPECT_ASSERTION_MSG(call(1, id), "false", NO_THROW);
}

TEST_F(GenericFunctorCallbackTest, EndsTheProcessForAnEmptyFunction) {
    void* const id = registered(nullptr);
    EXPECT_ASSERTION_MSG(call(1, id), "false", NO_THROW);
    EXPECT_EXIT(
        {
            FakeKovan::echoLogToStderr(true);
            call(1, id);
        },
        testing::KilledBySignal(SIGABRT),
        ContainsRegex(">Exception caught during GenericFunctorCallback:(.*\n)*.*bad_function_call"));
}

// --- Threads -------------------------------------------------------------------------------------------------------

TEST_F(GenericFunctorCallbackTest, CallsOnTheExpectedThread) {
    EXPECT_EQ(call(41, registered(increment, boost::this_thread::get_id())), 42);
}

TEST_F(GenericFunctorCallbackTest, EndsTheProcessOnAnotherThread) {
    void* const id = registered(increment, NOT_ANY_THREAD);
    EXPECT_ASSERTION_MSG(call(41, id), "0", wrongThread(NOT_ANY_THREAD));
}

TEST_F(GenericFunctorCallbackTest, CallsOnAnotherThreadInProduction) {
    FakeKovan::setProduction(true);
    EXPECT_EQ(call(41, registered(increment, NOT_ANY_THREAD)), 42);
}

// A function that runs until the test releases it.
class LongCall {
public:
    std::function<int(int)> function() {
        return [this](int number) {
            m_begun.happen();
            EXPECT_TRUE(m_goOn.wait());
            FakeKovan::note("call ends");
            return number;
        };
    }

    bool hasBegun() const { return m_begun.wait(); }
    void letGo() { m_goOn.happen(); }

private:
    Event m_begun;
    Event m_goOn;
};

TEST_F(GenericFunctorCallbackTest, CallsOneIdOnOneThreadAtATime) {
    LongCall longCall;
    bool first = true;
    void* const id = registered([&](int number) {
        if (first) {
            first = false;
            return longCall.function()(number);
        }
        FakeKovan::note("second call");
        return number;
    });
    OtherThread firstThread([id] { EXPECT_EQ(call(1, id), 1); });
    ASSERT_TRUE(longCall.hasBegun());
    OtherThread secondThread([id] { EXPECT_EQ(call(2, id), 2); });
    EXPECT_TRUE(secondThread.waitUntilItWaits());

    longCall.letGo();

    secondThread.finish();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("call ends", "second call"));
}

TEST_F(GenericFunctorCallbackTest, CallsSeveralIdsAtATime) {
    LongCall longCall;
    void* const id = registered(longCall.function());
    OtherThread other([id] { EXPECT_EQ(call(1, id), 1); });
    ASSERT_TRUE(longCall.hasBegun());

    Function second = increment;
    void* const secondId = registerData(&second);
    EXPECT_EQ(call(41, secondId), 42);
    unregister(secondId);

    longCall.letGo();
}

TEST_F(GenericFunctorCallbackTest, LetsAnUnregistrationWaitForTheEndOfTheCall) {
    LongCall longCall;
    void* const id = registered(longCall.function());
    OtherThread caller([id] { EXPECT_EQ(call(1, id), 1); });
    ASSERT_TRUE(longCall.hasBegun());
    OtherThread unregistering([this] {
        unregisterIt();
        FakeKovan::note("unregistered");
    });
    EXPECT_TRUE(unregistering.waitUntilItWaits());

    longCall.letGo();

    unregistering.finish();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("call ends", "unregistered"));
}

TEST_F(GenericFunctorCallbackTest, DoesNotCallWhatIsUnregisteredWhileItWaits) {
    LongCall longCall;
    void* const id = registered([&](int number) {
        unregisterIt();
        return longCall.function()(number);
    });
    OtherThread first([id] { EXPECT_EQ(call(1, id), 1); });
    ASSERT_TRUE(longCall.hasBegun());
    OtherThread late([id] { EXPECT_EQ(call(2, id), -1); });
    late.finish(); // the id is gone, so there is nothing to wait for

    longCall.letGo();

    first.finish();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log WRN The callback is not registered or removed. ID:  0x1",
                                                  "log WRN The callback can not be called. ID:  0x1", "call ends"));
}

TEST_F(GenericFunctorCallbackTest, DoesNotCallWhatWasUnregisteredBetweenItsTwoLocks) {
    Event begun;
    Event goOn;
    void* const id = registered([&](int number) {
        begun.happen();
        EXPECT_TRUE(goOn.wait());
        unregisterIt();
        return number;
    });
    OtherThread first([id] { EXPECT_EQ(call(1, id), 1); });
    ASSERT_TRUE(begun.wait());
    OtherThread second([id] { EXPECT_EQ(call(2, id), -1); });
    ASSERT_TRUE(second.waitUntilItWaits());

    goOn.happen();

    second.finish();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log WRN The callback is unregistered. ID:  0x1This will happen only if the callback is "
                            "unregistered between unlocking 'user data map mutex' and locking 'data mutex'.",
                            "log WRN The callback can not be called. ID:  0x1"));
}

TEST_F(GenericFunctorCallbackTest, NeverCallsAnObjectThatIsGone) {
    std::atomic<void*> current{nullptr};
    std::atomic<bool> done{false};
    OtherThread device([&] {
        while (!done) {
            call(1, current);
        }
    });
    for (int i = 0; i < 300; ++i) {
        const auto object = std::make_unique<int>(0);
        Function touch = [&object](int number) { return *object += number; };
        current = registerData(&touch);
        unregister(current);
        FakeKovan::forgetRecords();
    }
    done = true;
}

// --- A function that uses the register -----------------------------------------------------------------------------

TEST_F(GenericFunctorCallbackTest, LetsTheFunctionRegisterAndUnregisterOthers) {
    Function other = increment;
    void* const otherId = registerData(&other);
    void* const id = registered([&](int number) {
        unregister(otherId);
        void* const third = registerData(&other);
        const int result = call(number, third);
        unregister(third);
        return result;
    });
    EXPECT_EQ(call(41, id), 42);
    EXPECT_THAT(FakeKovan::logLines(), IsEmpty());
}

TEST_F(GenericFunctorCallbackTest, LetsTheFunctionUnregisterItself) {
    void* const id = registered([this](int number) {
        unregisterIt();
        return number;
    });
    EXPECT_EQ(call(5, id), 5);
    EXPECT_THAT(FakeKovan::logLines(), IsEmpty());
    EXPECT_EQ(call(5, id), -1);
}

TEST_F(GenericFunctorCallbackTest, LetsTheFunctionDestroyItsOriginal) {
    auto owned = std::make_unique<Function>();
    void* const id = registerData(owned.get());
    const auto state = std::make_shared<int>(5);
    *owned = [&owned, id, state](int number) {
        unregister(id);
        owned.reset();
        return number + *state;
    };
    EXPECT_EQ(call(1, id), 6);
}

TEST_F(GenericFunctorCallbackTest, LetsTheFunctionUnregisterTheOneThatCalledIt) {
    Function outer;
    void* const outerId = registerData(&outer);
    void* const innerId = registered([outerId](int number) {
        unregister(outerId);
        return number;
    });
    outer = [innerId](int number) { return call(number, innerId) + call(number, innerId); };
    EXPECT_EQ(call(3, outerId), 6);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR The callback has been already unregistered or it has never "
                                                  "been registered. Id: 0x1"))
        << "of the second call of the inner one";
}

TEST_F(GenericFunctorCallbackTest, LetsOneFunctionUnregisterAnotherThatDoesNotWaitForIt) {
    LongCall longCall;
    Function other = longCall.function();
    void* const otherId = registerData(&other);
    void* const id = registered([otherId](int number) {
        unregister(otherId);
        FakeKovan::note("unregistered");
        return number;
    });
    OtherThread otherThread([otherId] { EXPECT_EQ(call(1, otherId), 1); });
    ASSERT_TRUE(longCall.hasBegun());
    OtherThread thread([id] { EXPECT_EQ(call(2, id), 2); });
    EXPECT_TRUE(thread.waitUntilItWaits());

    longCall.letGo();

    thread.finish();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("call ends", "unregistered"));
}

TEST_F(GenericFunctorCallbackTest, IsUsedByManyThreadsWhichRegisterInTheirCallbacks) {
    const auto device = [] {
        for (int i = 0; i < 100; ++i) {
            Function inner = increment;
            Function outer = [&inner](int number) {
                void* const innerId = registerData(&inner);
                const int result = call(number, innerId);
                unregister(innerId);
                return result;
            };
            void* const outerId = registerData(&outer);
            EXPECT_EQ(call(41, outerId), 42);
            unregister(outerId);
        }
    };
    {
        std::vector<std::unique_ptr<OtherThread>> threads;
        for (int i = 0; i < 4; ++i) {
            threads.push_back(std::make_unique<OtherThread>(device));
        }
    }
    EXPECT_THAT(FakeKovan::logLines(), IsEmpty());
}

} // namespace
} // namespace DAX::Tests
