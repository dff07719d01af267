#include <cstdlib>
#include <iostream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Common/Logging/Logging.h"
#include "TestSingletons.h"
#include "Utility/Utils/SingletonServiceGuard.h"
#include "Utility/Utils/SingletonsRegister.h"
#include "support/ProcessDeath.h"

namespace DAX::Tests {
namespace {

using namespace Common::Utils;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::KilledBySignal;

const char MISSING_REQUIREMENT[] = "Cannot meet requirements of given singleton. Cannot find singletons required by "
                                   "given singleton.";

TEST(SingletonsRegisterMisuseTest, ServesNoSingletonThatDoesNotExist) {
    EXPECT_ASSERTION_MSG(service<Base>("test"), "0", "Singleton DUMMY_SINGLETON does not exist.");
}

TEST(SingletonsRegisterMisuseTest, ServesNoSingletonThatNoLongerExists) {
    { const SingletonServiceGuard<Base> guard; }
    EXPECT_ASSERTION_MSG(service<Base>("test"), "0", "Singleton DUMMY_SINGLETON does not exist.");
}

TEST(SingletonsRegisterMisuseTest, ServesNoSingletonWithAnIdThatIsNotInTheTable) {
    using Unknown = TestSingleton<static_cast<SingletonsID>(99)>;
    EXPECT_ASSERTION_MSG(service<Unknown>("test"), "0",
                         "Singleton Error: singleton identifier not recognized (99) does not exist.");
}

TEST(SingletonsRegisterMisuseTest, ServesNoSingletonOfAnotherType) {
    const SingletonServiceGuard<Base> guard;
    EXPECT_ASSERTION_MSG(theRegister().getService<Dependent>("test", Base::getID()), "0",
                         "Singleton's type probably doesn't match with its id");
}

TEST(SingletonsRegisterMisuseTest, ServesNothingWhenTheFactoryGaveNothing) {
    const SingletonServiceGuard<Base> guard([] { return nullptr; });
    EXPECT_ASSERTION_MSG(service<Base>("test"), "0", "Singleton's type probably doesn't match with its id");
}

TEST(SingletonsRegisterMisuseTest, LogsTheNeedThatCannotBeWithdrawnAndEnds) {
    EXPECT_ASSERTION_WITHOUT_MSG(unmark<Base>(), "0");
    EXPECT_EXIT(
        {
            FakeKovan::echoLogToStderr(true);
            unmark<Base>();
        },
        KilledBySignal(SIGABRT),
        ContainsRegex("SingletonsRegister\\.cpp:[0-9]+>Unmarking needed: singleton id: DUMMY_SINGLETON\n"
                      "(.*\n)*.*ASSERTION FAILED: 0, "));
}

TEST(SingletonsRegisterMisuseTest, EndsWhenANeedIsWithdrawnOnceTooOften) {
    mark<Base>();
    unmark<Base>();
    EXPECT_ASSERTION_WITHOUT_MSG(unmark<Base>(), "0");
}

struct Loud : Dependent {
    Loud() { std::cerr << "it is constructed" << std::endl; }
};

TEST(SingletonsRegisterMisuseTest, MakesASingletonBeforeItMissesTheRequirement) {
    EXPECT_ASSERTION_MSG(mark<Loud>(), "0", MISSING_REQUIREMENT);
    EXPECT_EXIT(
        {
            FakeKovan::echoLogToStderr(true);
            mark<Loud>();
        },
        KilledBySignal(SIGABRT),
        ContainsRegex("it is constructed\n.*\\[INF\\] SingletonsRegister\\.cpp:[0-9]+>Cannot meet requirements of "
                      "given singleton: DEPENDENT_DUMMY_SINGLETON\\. Cannot find singleton: DUMMY_SINGLETON required "
                      "by given singleton\\. All requirements:  DUMMY_SINGLETON\n"
                      "(.*\n)*.*ASSERTION FAILED: 0, "));
}

TEST(SingletonsRegisterMisuseTest, NamesTheFirstMissingRequirementAndAllOfThem) {
    using Demanding =
        TestSingleton<DEPENDENT_DUMMY_SINGLETON, DUMMY_SINGLETON, USER_DATA_REGISTER, G_MAIN_LOOP, DUMMY_SINGLETON>;
    const SingletonServiceGuard<Base> guard;
    EXPECT_EXIT(
        {
            FakeKovan::echoLogToStderr(true);
            mark<Demanding>();
        },
        KilledBySignal(SIGABRT),
        HasSubstr(">Cannot meet requirements of given singleton: DEPENDENT_DUMMY_SINGLETON. Cannot find singleton: "
                  "USER_DATA_REGISTER required by given singleton. All requirements:  DUMMY_SINGLETON "
                  "USER_DATA_REGISTER G_MAIN_LOOP DUMMY_SINGLETON\n"));
}

// Withdraws one need of Base too many: the one that Dependent has.
void withdrawTheNeedOfARequirement() {
    mark<Base>();
    mark<Dependent>();
    unmark<Base>();
    unmark<Base>();
}

TEST(SingletonsRegisterMisuseTest, MissesARequirementOfASingletonThatExists) {
    EXPECT_ASSERTION_MSG(
        {
            withdrawTheNeedOfARequirement();
            mark<Dependent>();
        },
        "0", MISSING_REQUIREMENT);
}

TEST(SingletonsRegisterMisuseTest, MissesTheRequirementOfARequirement) {
    using Third = TestSingleton<SINGLETON_SYSTEM_CONTROL, DEPENDENT_DUMMY_SINGLETON>;
    EXPECT_EXIT(
        {
            FakeKovan::echoLogToStderr(true);
            withdrawTheNeedOfARequirement();
            mark<Third>();
        },
        KilledBySignal(SIGABRT),
        HasSubstr(">Cannot meet requirements of given singleton: DEPENDENT_DUMMY_SINGLETON. Cannot find singleton: "
                  "DUMMY_SINGLETON required by given singleton. All requirements:  DUMMY_SINGLETON\n"));
}

TEST(SingletonsRegisterMisuseTest, CannotWithdrawTheNeedOfARequirementThatIsGone) {
    EXPECT_ASSERTION_WITHOUT_MSG(
        {
            withdrawTheNeedOfARequirement();
            unmark<Dependent>();
        },
        "0");
}

// --- A singleton that is being made, or destroyed, is not to be seen -----------------------------------------------

TEST(SingletonsRegisterMisuseTest, DoesNotServeASingletonToItsOwnConstructor) {
    struct Impatient : Base {
        Impatient() { service<Base>("constructor"); }
    };
    EXPECT_ASSERTION_MSG(mark<Impatient>(), "0", "Singleton DUMMY_SINGLETON does not exist.");
}

TEST(SingletonsRegisterMisuseTest, DoesNotServeASingletonToItsOwnDestructor) {
    struct Clinging : Base {
        ~Clinging() override { service<Base>("destructor"); }
    };
    EXPECT_ASSERTION_MSG({ const SingletonServiceGuard<Clinging> guard; }, "0",
                         "Singleton DUMMY_SINGLETON does not exist.");
}

TEST(SingletonsRegisterMisuseTest, EndsWhenADestructorThrows) {
    struct Throwing : Base {
        ~Throwing() override { std::string().at(0); }
    };
    EXPECT_EXIT({ const SingletonServiceGuard<Throwing> guard; }, KilledBySignal(SIGABRT), "terminate called");
}

// --- The end of the process ----------------------------------------------------------------------------------------

TEST(SingletonsRegisterMisuseTest, ReportsALeakedGuardAtTheEndOfTheProcess) {
    EXPECT_ASSERTION_WITHOUT_MSG(
        {
            mark<Base>();
            std::exit(0);
        },
        "m_neededCnt == 0");
}

TEST(SingletonsRegisterMisuseTest, LogsALeakedGuardUnderTheNameOfTheProcess) {
    EXPECT_EXIT(
        {
            FakeKovan::echoLogToStderr(true);
            Common::Logging::LoggingClass::init("ProcessWithALongName");
            mark<Base>();
            std::exit(0);
        },
        KilledBySignal(SIGABRT),
        ContainsRegex("\\[ProcessWithALongName-17\\.037\\.0\\][^\n]*ASSERTION FAILED: m_needed"));
}

TEST(SingletonsRegisterMisuseTest, LetsAProcessEndThatLeaksNothing) {
    EXPECT_EXIT(
        {
            { const SingletonServiceGuard<Base> guard; }
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace DAX::Tests
