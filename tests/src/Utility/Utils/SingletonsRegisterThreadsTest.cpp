#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestSingletons.h"
#include "Utility/Utils/SingletonServiceGuard.h"
#include "Utility/Utils/SingletonsRegister.h"
#include "support/Event.h"
#include "support/OtherThread.h"
#include "support/ProcessDeath.h"

namespace DAX::Tests {
namespace {

using namespace Common::Utils;

template <class T>
using Guard = SingletonServiceGuard<T>;

// Another thread, which stays in the factory of T until the test releases it.
template <class T>
class SlowCreation {
public:
    ~SlowCreation() { letGo(); }

    void letGo() {
        if (!m_goOn.happened()) {
            m_goOn.happen();
        }
    }

    std::shared_ptr<RegisterableSingleton> make() {
        m_inFactory.happen();
        EXPECT_TRUE(m_goOn.wait());
        return SingletonsRegister::defaultFactory<T>();
    }

    bool waitUntilItIsInTheFactory() const { return m_inFactory.wait(); }

private:
    Event m_inFactory;
    Event m_goOn;
    OtherThread m_thread{[this] { const Guard<T> guard([this] { return make(); }); }};
};

TEST(SingletonsRegisterThreadsTest, ServesWhileAnotherThreadIsInAFactory) {
    const Guard<Base> base;
    SlowCreation<Dependent> creation;
    ASSERT_TRUE(creation.waitUntilItIsInTheFactory());

    EXPECT_EQ(service<Base>("test")->answer(), 42);
}

TEST(SingletonsRegisterThreadsTest, DoesNotServeWhatAnotherThreadIsMaking) {
    EXPECT_ASSERTION_MSG(
        {
            const Guard<Base> base;
            SlowCreation<Dependent> creation;
            creation.waitUntilItIsInTheFactory();
            service<Dependent>("test");
        },
        "0", "Singleton DEPENDENT_DUMMY_SINGLETON does not exist.");
}

TEST(SingletonsRegisterThreadsTest, LetsASecondThreadWaitForTheCreation) {
    SlowCreation<Base> creation;
    ASSERT_TRUE(creation.waitUntilItIsInTheFactory());
    OtherThread second([] {
        const Guard<Base> guard;
        EXPECT_EQ(service<Base>("second")->answer(), 42);
    });
    EXPECT_TRUE(second.waitUntilItWaits());
    EXPECT_EQ(FakeKovan::count("INF", "Needed: singleton id: DUMMY_SINGLETON"), 1);

    creation.letGo();

    second.finish();
}

// Its destructor waits until the test releases it.
struct SlowEnd : Dependent {
    static Event* s_inDestructor;
    static Event* s_goOn;
    ~SlowEnd() override {
        s_inDestructor->happen();
        EXPECT_TRUE(s_goOn->wait());
    }
};
Event* SlowEnd::s_inDestructor = nullptr;
Event* SlowEnd::s_goOn = nullptr;

TEST(SingletonsRegisterThreadsTest, LetsASecondThreadWaitForTheDestruction) {
    Event inDestructor, goOn;
    SlowEnd::s_inDestructor = &inDestructor;
    SlowEnd::s_goOn = &goOn;
    const Guard<Base> base;
    OtherThread first([] { const Guard<SlowEnd> guard; });
    ASSERT_TRUE(inDestructor.wait());
    OtherThread second([] { const Guard<Dependent> guard; });
    EXPECT_TRUE(second.waitUntilItWaits());
    EXPECT_EQ(service<Base>("test")->answer(), 42) << "which is not kept from anybody";

    goOn.happen();

    second.finish();
    EXPECT_THAT(FakeKovan::journal("construct"),
                testing::ElementsAre("construct DUMMY_SINGLETON", "construct DEPENDENT_DUMMY_SINGLETON",
                                     "construct DEPENDENT_DUMMY_SINGLETON"));
}

TEST(SingletonsRegisterThreadsTest, IsFreeForOtherThreadsAfterAFactoryThatThrew) {
    const auto factory = []() -> std::shared_ptr<RegisterableSingleton> { throw std::domain_error("broken"); };
    EXPECT_THROW(theRegister().markNeeded<Base>(Base::getID(), factory), std::domain_error);

    OtherThread other([] {
        const Guard<Base> guard;
        EXPECT_EQ(service<Base>("other")->answer(), 42);
    });
    other.finish();
}

void useTheRegister(int rounds) {
    for (int i = 0; i < rounds; ++i) {
        const Guard<Base> base;
        const Guard<Dependent> dependent;
        SingletonPointer<Dependent> pointer = service<Dependent>("user");
        EXPECT_EQ(pointer->answer(), service<Base>("user")->answer());
    }
}

// What the journal must show of the two: never two of one kind, never Dependent without Base, none at the end.
void expectLivesInOrder() {
    bool base = false;
    bool dependent = false;
    for (const std::string& entry : FakeKovan::journal()) {
        if (entry == "construct DUMMY_SINGLETON" || entry == "destroy DUMMY_SINGLETON") {
            EXPECT_FALSE(dependent);
            EXPECT_EQ(base, entry[0] == 'd');
            base = !base;
        } else if (entry == "construct DEPENDENT_DUMMY_SINGLETON" || entry == "destroy DEPENDENT_DUMMY_SINGLETON") {
            EXPECT_TRUE(base);
            EXPECT_EQ(dependent, entry[0] == 'd');
            dependent = !dependent;
        }
    }
    EXPECT_FALSE(base || dependent);
}

TEST(SingletonsRegisterThreadsTest, IsUsedByManyThreadsAtOnce) {
    {
        std::vector<std::unique_ptr<OtherThread>> threads;
        for (int i = 0; i < 4; ++i) {
            threads.push_back(std::make_unique<OtherThread>([] { useTheRegister(100); }));
        }
    }
    EXPECT_EQ(FakeKovan::count("INF", "Needed: singleton id: DUMMY_SINGLETON"), 400);
    expectLivesInOrder();
}

TEST(SingletonsRegisterThreadsTest, ServesManyThreadsWhileItCreatesAndDestroys) {
    const Guard<Base> base;
    std::atomic<bool> done{false};
    OtherThread creator([&done] {
        for (int i = 0; i < 200; ++i) {
            const Guard<Dependent> dependent;
        }
        done = true;
    });
    do {
        EXPECT_EQ(service<Base>("test")->answer(), 42);
    } while (!done);
}

} // namespace
} // namespace DAX::Tests
