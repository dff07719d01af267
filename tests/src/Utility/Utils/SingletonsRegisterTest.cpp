#include "Utility/Utils/SingletonsRegister.h"

#include <functional>
#include <memory>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestSingletons.h"
#include "Utility/Utils/SingletonServiceGuard.h"

namespace DAX::Tests {
namespace {

using namespace Common::Utils;
using testing::ElementsAre;
using testing::IsEmpty;

template <class T>
using Guard = SingletonServiceGuard<T>;

// A graph with two paths from the top to the bottom.
using Bottom = TestSingleton<USER_DATA_REGISTER>;
using Left = TestSingleton<G_MAIN_LOOP, USER_DATA_REGISTER>;
using Right = TestSingleton<POWER_OFF_CB_DISTRIBUTOR, USER_DATA_REGISTER>;
using Top = TestSingleton<SINGLETON_BOOTCLOCK_INITIALIZER, G_MAIN_LOOP, POWER_OFF_CB_DISTRIBUTOR>;

std::vector<std::string> notesOf(const std::function<void()>& action) {
    FakeKovan::forgetRecords();
    action();
    return FakeKovan::journal();
}

std::vector<std::string> deletedBy(const std::function<void()>& action) {
    std::vector<std::string> deleted;
    for (const std::string& entry : notesOf(action)) {
        if (entry.rfind("log INF Singleton: ", 0) == 0) {
            deleted.push_back(entry.substr(std::string("log INF ").size()));
        }
    }
    return deleted;
}

TEST(SingletonsRegisterTest, IsOne) {
    EXPECT_EQ(&SingletonsRegister::getSingletonsRegister(), &SingletonsRegister::getSingletonsRegister());
}

TEST(SingletonsRegisterTest, CreatesASingletonAtItsFirstNeed) {
    mark<Base>();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Needed: singleton id: DUMMY_SINGLETON",
                                                  "log INF Creating : singleton id: DUMMY_SINGLETON", //
                                                  "construct DUMMY_SINGLETON"));
    unmark<Base>();
}

TEST(SingletonsRegisterTest, DestroysASingletonThatIsNoLongerNeeded) {
    mark<Base>();
    EXPECT_THAT(notesOf(unmark<Base>),
                ElementsAre("log INF Unmarking needed: singleton id: DUMMY_SINGLETON",
                            "log INF Singleton: DUMMY_SINGLETON will be deleted.", "destroy DUMMY_SINGLETON"));
}

TEST(SingletonsRegisterTest, CountsTheNeedsOfASingletonThatExists) {
    mark<Base>();
    EXPECT_THAT(notesOf(mark<Base>), ElementsAre("log INF Needed: singleton id: DUMMY_SINGLETON"));
    EXPECT_THAT(notesOf(unmark<Base>), ElementsAre("log INF Unmarking needed: singleton id: DUMMY_SINGLETON"));
    EXPECT_THAT(deletedBy(unmark<Base>), ElementsAre("Singleton: DUMMY_SINGLETON will be deleted."));
}

TEST(SingletonsRegisterTest, NeedsNoFactoryForASingletonThatExists) {
    const Guard<Base> guard;
    theRegister().markNeeded<Base>(Base::getID(), nullptr);
    EXPECT_EQ(service<Base>("test")->answer(), 42);
    unmark<Base>();
}

TEST(SingletonsRegisterTest, MakesANewObjectEachTime) {
    for (int i = 0; i < 2; ++i) {
        mark<Base>();
        unmark<Base>();
        EXPECT_THAT(FakeKovan::journal("construct"), testing::SizeIs(i + 1));
        EXPECT_THAT(FakeKovan::journal("destroy"), testing::SizeIs(i + 1));
    }
}

TEST(SingletonsRegisterTest, GivesTheObjectThatTheFactoryMade) {
    const auto made = SingletonsRegister::defaultFactory<Base>();
    const Guard<Base> guard([&made] { return made; });

    EXPECT_EQ(service<Base>("test").operator->(), made.get());
}

TEST(SingletonsRegisterTest, IsTheOnlyOwnerOfTheObject) {
    std::weak_ptr<Base> made;
    {
        const Guard<Base> guard([&made] {
            const auto object = SingletonsRegister::defaultFactory<Base>();
            made = object;
            return object;
        });
        EXPECT_EQ(made.use_count(), 1);
    }
    EXPECT_TRUE(made.expired());
}

TEST(SingletonsRegisterTest, AsksForTheRequirementsBeforeItCallsTheFactory) {
    struct Asked : Base {
        static std::list<SingletonsID> getRequirements() {
            FakeKovan::note("ask for requirements");
            return {};
        }
    };
    const Guard<Asked> guard;
    mark<Asked>();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF Needed: singleton id: DUMMY_SINGLETON",
                            "log INF Creating : singleton id: DUMMY_SINGLETON", "ask for requirements",
                            "construct DUMMY_SINGLETON", "log INF Needed: singleton id: DUMMY_SINGLETON"));
    unmark<Asked>();
}

TEST(SingletonsRegisterTest, CountsANeedOfEachRequirementForEachNeedOfASingleton) {
    mark<Base>();
    mark<Dependent>();
    mark<Dependent>();
    EXPECT_THAT(deletedBy(unmark<Base>), IsEmpty());
    EXPECT_THAT(deletedBy(unmark<Dependent>), IsEmpty());
    EXPECT_THAT(deletedBy(unmark<Dependent>), ElementsAre("Singleton: DEPENDENT_DUMMY_SINGLETON will be deleted.",
                                                          "Singleton: DUMMY_SINGLETON will be deleted."));
}

TEST(SingletonsRegisterTest, WithdrawsTheNeedsOfARequirementAgain) {
    mark<Base>();
    mark<Dependent>();
    mark<Dependent>();
    unmark<Dependent>();
    EXPECT_THAT(deletedBy(unmark<Dependent>), ElementsAre("Singleton: DEPENDENT_DUMMY_SINGLETON will be deleted."));
    EXPECT_THAT(deletedBy(unmark<Base>), ElementsAre("Singleton: DUMMY_SINGLETON will be deleted."));
}

TEST(SingletonsRegisterTest, DestroysASingletonBeforeItWithdrawsTheNeedOfItsRequirement) {
    mark<Base>();
    mark<Dependent>();
    unmark<Base>();
    EXPECT_THAT(notesOf(unmark<Dependent>),
                ElementsAre("log INF Unmarking needed: singleton id: DEPENDENT_DUMMY_SINGLETON",
                            "log INF Singleton: DEPENDENT_DUMMY_SINGLETON will be deleted.",
                            "destroy DEPENDENT_DUMMY_SINGLETON",
                            "log INF Unmarking needed: singleton id: DUMMY_SINGLETON",
                            "log INF Singleton: DUMMY_SINGLETON will be deleted.", "destroy DUMMY_SINGLETON"));
}

TEST(SingletonsRegisterTest, WithdrawsTheNeedOfARequirementEvenWhenTheSingletonStays) {
    const Guard<Base> base;
    const Guard<Dependent> dependent;
    mark<Dependent>();
    EXPECT_THAT(notesOf(unmark<Dependent>),
                ElementsAre("log INF Unmarking needed: singleton id: DEPENDENT_DUMMY_SINGLETON",
                            "log INF Unmarking needed: singleton id: DUMMY_SINGLETON"));
}

TEST(SingletonsRegisterTest, KeepsARequirementThatIsShared) {
    using Other = TestSingleton<SINGLETON_SYSTEM_CONTROL, DUMMY_SINGLETON>;
    mark<Base>();
    mark<Dependent>();
    mark<Other>();
    unmark<Base>();
    EXPECT_THAT(deletedBy(unmark<Dependent>), ElementsAre("Singleton: DEPENDENT_DUMMY_SINGLETON will be deleted."));
    EXPECT_THAT(deletedBy(unmark<Other>), ElementsAre("Singleton: SINGLETON_SYSTEM_CONTROL will be deleted.",
                                                      "Singleton: DUMMY_SINGLETON will be deleted."));
}

TEST(SingletonsRegisterTest, CountsANeedForEachPathToARequirement) {
    mark<Bottom>();
    mark<Left>();
    mark<Right>();
    mark<Top>();
    unmark<Left>();
    unmark<Right>();
    unmark<Bottom>(); // the two needs of the top remain
    EXPECT_THAT(
        notesOf(unmark<Top>),
        ElementsAre("log INF Unmarking needed: singleton id: SINGLETON_BOOTCLOCK_INITIALIZER",
                    "log INF Singleton: SINGLETON_BOOTCLOCK_INITIALIZER will be deleted.",
                    "destroy SINGLETON_BOOTCLOCK_INITIALIZER", "log INF Unmarking needed: singleton id: G_MAIN_LOOP",
                    "log INF Singleton: G_MAIN_LOOP will be deleted.", //
                    "destroy G_MAIN_LOOP", "log INF Unmarking needed: singleton id: POWER_OFF_CB_DISTRIBUTOR",
                    "log INF Singleton: POWER_OFF_CB_DISTRIBUTOR will be deleted.", "destroy POWER_OFF_CB_DISTRIBUTOR",
                    "log INF Unmarking needed: singleton id: USER_DATA_REGISTER",
                    "log INF Unmarking needed: singleton id: USER_DATA_REGISTER",
                    "log INF Singleton: USER_DATA_REGISTER will be deleted.", //
                    "destroy USER_DATA_REGISTER"));
}

TEST(SingletonsRegisterTest, CountsTwiceARequirementThatIsNamedTwice) {
    using Twice = TestSingleton<DEPENDENT_DUMMY_SINGLETON, DUMMY_SINGLETON, DUMMY_SINGLETON>;
    mark<Base>();
    mark<Twice>();
    unmark<Base>(); // its own need
    EXPECT_THAT(notesOf(unmark<Twice>),
                ElementsAre("log INF Unmarking needed: singleton id: DEPENDENT_DUMMY_SINGLETON",
                            "log INF Singleton: DEPENDENT_DUMMY_SINGLETON will be deleted.",
                            "destroy DEPENDENT_DUMMY_SINGLETON",
                            "log INF Unmarking needed: singleton id: DUMMY_SINGLETON",
                            "log INF Unmarking needed: singleton id: DUMMY_SINGLETON",
                            "log INF Singleton: DUMMY_SINGLETON will be deleted.", "destroy DUMMY_SINGLETON"));
}

TEST(SingletonsRegisterTest, DestroysInTheReverseOrderOfTheGuards) {
    using BootClock = TestSingleton<SINGLETON_BOOTCLOCK_INITIALIZER, G_MAIN_LOOP>;
    EXPECT_THAT(deletedBy([] {
                    const Guard<Bottom> userData;
                    const Guard<Left> mainLoop;
                    const Guard<BootClock> bootClock;
                }),
                ElementsAre("Singleton: SINGLETON_BOOTCLOCK_INITIALIZER will be deleted.",
                            "Singleton: G_MAIN_LOOP will be deleted.",
                            "Singleton: USER_DATA_REGISTER will be deleted."));
}

TEST(SingletonsRegisterTest, AcceptsAnIdThatIsNotInTheTable) {
    using Unknown = TestSingleton<static_cast<SingletonsID>(99)>;
    { const Guard<Unknown> guard; }
    EXPECT_THAT(FakeKovan::messages("INF"),
                ElementsAre("Needed: singleton id: Error: singleton identifier not recognized (99)",
                            "Creating : singleton id: Error: singleton identifier not recognized (99)",
                            "Unmarking needed: singleton id: Error: singleton identifier not recognized (99)",
                            "Singleton: Error: singleton identifier not recognized (99) will be deleted."));
}

// --- What a factory throws -----------------------------------------------------------------------------------------

// Checks the state after a failed attempt to make Dependent: it does not exist, the count of needs of Base is
// unchanged, and everything works.
void expectThatNothingHasChanged() {
    EXPECT_THAT(deletedBy(unmark<Base>), ElementsAre("Singleton: DUMMY_SINGLETON will be deleted."));
    const Guard<Base> base;
    EXPECT_THAT(notesOf([] { const Guard<Dependent> dependent; }),
                testing::Contains("construct DEPENDENT_DUMMY_SINGLETON"));
}

TEST(SingletonsRegisterTest, IsUnchangedByAnEmptyFactory) {
    mark<Base>();
    FakeKovan::forgetRecords();
    EXPECT_THROW(theRegister().markNeeded<Dependent>(Dependent::getID(), nullptr), std::bad_function_call);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Needed: singleton id: DEPENDENT_DUMMY_SINGLETON",
                                                  "log INF Creating : singleton id: DEPENDENT_DUMMY_SINGLETON"));
    expectThatNothingHasChanged();
}

TEST(SingletonsRegisterTest, IsUnchangedByAFactoryThatThrows) {
    mark<Base>();
    const auto factory = []() -> std::shared_ptr<RegisterableSingleton> { throw std::domain_error("broken"); };
    EXPECT_THROW(theRegister().markNeeded<Dependent>(Dependent::getID(), factory), std::domain_error);
    expectThatNothingHasChanged();
}

TEST(SingletonsRegisterTest, IsUnchangedByAConstructorThatThrows) {
    struct Broken : Dependent {
        Broken() { throw std::domain_error("broken"); }
    };
    mark<Base>();
    EXPECT_THROW(mark<Broken>(), std::domain_error);
    expectThatNothingHasChanged();
}

// --- A singleton that uses the register itself ---------------------------------------------------------------------

struct UsesItsRequirement : Dependent {
    UsesItsRequirement() { FakeKovan::note("constructor " + std::to_string(service<Base>("constructor")->answer())); }
    ~UsesItsRequirement() override {
        FakeKovan::note("destructor " + std::to_string(service<Base>("destructor")->answer()));
    }
};

TEST(SingletonsRegisterTest, ServesTheConstructorAndTheDestructorOfASingleton) {
    mark<Base>();
    mark<UsesItsRequirement>();
    unmark<Base>();
    unmark<UsesItsRequirement>();
    EXPECT_THAT(FakeKovan::journal("constructor"), ElementsAre("constructor 42"));
    EXPECT_THAT(FakeKovan::journal("destructor"), ElementsAre("destructor 42"));
}

// Needs another singleton from its construction to its destruction.
struct HoldsAGuard : TestSingleton<DEPENDENT_DUMMY_SINGLETON> {
    const Guard<Base> guard;
};

TEST(SingletonsRegisterTest, LetsTheConstructorOfASingletonMarkAnother) {
    const Guard<HoldsAGuard> guard;
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF Needed: singleton id: DEPENDENT_DUMMY_SINGLETON",
                            "log INF Creating : singleton id: DEPENDENT_DUMMY_SINGLETON",
                            "construct DEPENDENT_DUMMY_SINGLETON", "log INF Needed: singleton id: DUMMY_SINGLETON",
                            "log INF Creating : singleton id: DUMMY_SINGLETON", "construct DUMMY_SINGLETON"));
    EXPECT_EQ(service<Base>("test")->answer(), 42);
}

TEST(SingletonsRegisterTest, LetsTheDestructorOfASingletonUnmarkAnother) {
    mark<HoldsAGuard>();
    EXPECT_THAT(notesOf(unmark<HoldsAGuard>),
                ElementsAre("log INF Unmarking needed: singleton id: DEPENDENT_DUMMY_SINGLETON",
                            "log INF Singleton: DEPENDENT_DUMMY_SINGLETON will be deleted.",
                            "log INF Unmarking needed: singleton id: DUMMY_SINGLETON",
                            "log INF Singleton: DUMMY_SINGLETON will be deleted.", //
                            "destroy DUMMY_SINGLETON",                             //
                            "destroy DEPENDENT_DUMMY_SINGLETON"));
}

// The requirements are looked up after the object has been made.
TEST(SingletonsRegisterTest, LetsAFactoryMarkWhatItsSingletonRequires) {
    std::unique_ptr<Guard<Base>> base;
    const Guard<Dependent> dependent([&base] {
        base = std::make_unique<Guard<Base>>();
        return SingletonsRegister::defaultFactory<Dependent>();
    });
    EXPECT_EQ(service<Dependent>("test")->answer(), 42);
}

} // namespace
} // namespace DAX::Tests
