#include <atomic>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <thread>

#include <device_power.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "host/SimulatedPower.h"
#include "support/ForkedProcess.h"
#include "support/MainContext.h"
#include "support/PowerListener.h"
#include "support/TemporaryRoot.h"

using DAX::Tests::ForkedProcess;
using DAX::Tests::iterateUntil;
using DAX::Tests::PowerListener;
using DAX::Tests::TemporaryRoot;
using testing::ElementsAre;

namespace {

const char* const POWER_FILE = "run/kovan/power.ini";

std::string fileWith(int state) {
    return "[power]\nstate=" + std::to_string(state) + "\nwakeup_reason=0\n";
}

class PowerAnnouncementsTest : public testing::Test {
protected:
    void write(const std::string& text) const { m_root.write(POWER_FILE, text); }
    std::string path() const { return (m_root / POWER_FILE).string(); }

    // Replaces the whole file, as another program would.
    void replace(const std::string& text) const {
        m_root.write("elsewhere", text);
        std::filesystem::rename(m_root / "elsewhere", path());
    }

    const TemporaryRoot m_root;
};

// Another process that makes a change on request. It is made before this process has threads.
class Other {
public:
    explicit Other(const std::function<void()>& change)
        : m_process([this, change] {
            char byte;
            if (read(m_gate.ends[0], &byte, 1) != 1) {
                return 1;
            }
            change();
            return 0;
        }) {}

    // 0 when the change was made.
    int change() { return ::write(m_gate.ends[1], "x", 1) == 1 ? m_process.wait() : -1; }

private:
    struct Gate {
        Gate() {
            if (pipe(ends) != 0) {
                ends[0] = ends[1] = -1;
            }
        }
        ~Gate() {
            close(ends[0]);
            close(ends[1]);
        }
        int ends[2];
    };

    Gate m_gate;
    ForkedProcess m_process;
};

struct PairCase {
    const char* name;
    int (*subscribe)(device_power_callback callback, void* userData);
    int (*unsubscribe)(device_power_callback callback);
    std::function<void(int number)> announce;
};

const PairCase PAIRS[] = {
    {"state_changed", device_power_subscribe_state_changed, device_power_unsubscribe_state_changed,
     KovanHost::setPowerState},
    {"poweroff", device_power_subscribe_poweroff, device_power_unsubscribe_poweroff, KovanHost::announcePowerOff},
    {"post_wakeup", device_power_subscribe_post_wakeup, device_power_unsubscribe_post_wakeup, KovanHost::wakeUp}};

int append(int number, void* numbers) {
    static_cast<std::vector<int>*>(numbers)->push_back(number);
    return 0;
}

int appendToo(int number, void* numbers) {
    return append(-number, numbers);
}

class PowerPairTest : public PowerAnnouncementsTest, public testing::WithParamInterface<PairCase> {
protected:
    ~PowerPairTest() override {
        GetParam().unsubscribe(append);
        GetParam().unsubscribe(appendToo);
    }

    int subscribe(device_power_callback callback) { return GetParam().subscribe(callback, &m_numbers); }

    const std::vector<int>& hear(std::size_t count) {
        iterateUntil([&] { return m_numbers.size() >= count; });
        return m_numbers;
    }

    std::vector<int> m_numbers;
};

} // namespace

TEST_P(PowerPairTest, CallsEverySubscriberInTheOrderOfSubscription) {
    EXPECT_EQ(subscribe(appendToo), 0);
    EXPECT_EQ(subscribe(append), 0);
    GetParam().announce(2);

    EXPECT_THAT(hear(2), ElementsAre(-2, 2));
}

TEST_P(PowerPairTest, RefusesASecondSubscriptionOfOneCallback) {
    std::vector<int> others;
    EXPECT_EQ(subscribe(append), 0);
    EXPECT_EQ(GetParam().subscribe(append, &others), -17);
    GetParam().announce(2);

    EXPECT_THAT(hear(1), ElementsAre(2));
    EXPECT_THAT(others, ElementsAre());
}

TEST_P(PowerPairTest, TakesACallbackAgainAfterItsUnsubscription) {
    EXPECT_EQ(subscribe(append), 0);
    EXPECT_EQ(GetParam().unsubscribe(append), 0);
    EXPECT_EQ(GetParam().unsubscribe(append), -ENOENT);
    GetParam().announce(1);
    EXPECT_EQ(subscribe(append), 0);
    GetParam().announce(2);

    EXPECT_THAT(hear(1), ElementsAre(2));
}

TEST_P(PowerPairTest, DoesNotCallTheUnsubscribed) {
    subscribe(append);
    subscribe(appendToo);
    GetParam().announce(1);
    EXPECT_EQ(GetParam().unsubscribe(append), 0);
    GetParam().announce(2);

    EXPECT_THAT(hear(2), ElementsAre(-1, -2));
}

TEST_P(PowerPairTest, RefusesANullCallback) {
    EXPECT_EQ(subscribe(nullptr), -EINVAL);
    EXPECT_EQ(GetParam().unsubscribe(nullptr), -ENOENT);
}

TEST_P(PowerPairTest, OneCallbackMayBeInEveryPair) {
    for (const PairCase& pair : PAIRS) {
        EXPECT_EQ(pair.subscribe(append, &m_numbers), 0);
    }
    for (const PairCase& pair : PAIRS) {
        EXPECT_EQ(pair.unsubscribe(append), 0);
    }
}

TEST_P(PowerPairTest, HearsNothingFromBeforeTheSubscription) {
    GetParam().announce(1);
    subscribe(append);
    GetParam().announce(2);

    EXPECT_THAT(hear(1), ElementsAre(2));
}

TEST_P(PowerPairTest, LaterSubscriberHearsNothingFromBefore) {
    subscribe(append);
    GetParam().announce(1);
    subscribe(appendToo);
    GetParam().announce(2);

    EXPECT_THAT(hear(3), ElementsAre(1, 2, -2));
}

TEST_P(PowerPairTest, HearsSeveralInARow) {
    subscribe(append);
    for (const int number : {1, 2, 1, 0, 4}) {
        GetParam().announce(number);
    }

    EXPECT_THAT(hear(5), ElementsAre(1, 2, 1, 0, 4));
}

TEST_P(PowerPairTest, HearsAnotherProcess) {
    Other other([] { GetParam().announce(2); });
    subscribe(append);
    ASSERT_EQ(other.change(), 0);

    EXPECT_THAT(hear(1), ElementsAre(2));
}

TEST_P(PowerPairTest, FailsWithoutAFolder) {
    m_root.write("run", "a file where a folder has to be");

    EXPECT_EQ(subscribe(append), -1);
    EXPECT_EQ(GetParam().unsubscribe(append), -ENOENT);
}

INSTANTIATE_TEST_SUITE_P(Pairs, PowerPairTest, testing::ValuesIn(PAIRS),
                         [](const auto& instance) { return std::string(instance.param.name); });

TEST_F(PowerAnnouncementsTest, AnnouncesInTheOrderOfTheEventsAcrossTheirKinds) {
    PowerListener listener;
    device_power_set_state(1, 0);
    KovanHost::announcePowerOff(3);
    KovanHost::wakeUp(41);
    device_power_set_state(0, 0);

    EXPECT_THAT(listener.hearUntil("state_changed 0"),
                ElementsAre("state_changed 1", "poweroff 3", "post_wakeup 41", "state_changed 0"));
}

TEST_F(PowerAnnouncementsTest, SameEventTwiceIsAnnouncedTwice) {
    PowerListener listener;
    KovanHost::announcePowerOff(3);
    KovanHost::announcePowerOff(3);
    KovanHost::wakeUp(5);
    KovanHost::wakeUp(std::nullopt);
    device_power_set_state(1, 0);

    EXPECT_THAT(listener.hearUntil("state_changed 1"),
                ElementsAre("poweroff 3", "poweroff 3", "post_wakeup 5", "post_wakeup 5", "state_changed 1"));
}

TEST_F(PowerAnnouncementsTest, SameStateReasonsAndRequestsAreNotAnnounced) {
    PowerListener listener;
    device_power_set_state(0, 1);
    device_power_set_wakeup_reason(5);
    device_power_request_reboot(1);
    device_power_request_poweroff(1);
    KovanHost::announcePowerOff(3);

    EXPECT_THAT(listener.hearUntil("poweroff 3"), ElementsAre("poweroff 3"));
}

TEST_F(PowerAnnouncementsTest, StateThatAPersonWroteIsAnnounced) {
    write(fileWith(1));
    PowerListener listener;
    write(fileWith(7));

    EXPECT_THAT(listener.hearUntil("state_changed 7"), ElementsAre("state_changed 7"));
}

TEST_F(PowerAnnouncementsTest, FileThatReplacesTheOldOneIsSeen) {
    write(fileWith(1));
    PowerListener listener;
    replace(fileWith(2));
    EXPECT_THAT(listener.hearUntil("state_changed 2"), ElementsAre("state_changed 2"));
    replace(fileWith(1));

    EXPECT_THAT(listener.hearUntil("state_changed 1"), ElementsAre("state_changed 2", "state_changed 1"));
}

TEST_F(PowerAnnouncementsTest, FirstFileIsSeenAndItsFolderMade) {
    ASSERT_TRUE(std::filesystem::is_empty(m_root.path()));
    PowerListener listener;
    EXPECT_TRUE(std::filesystem::is_directory(m_root / "run/kovan"));
    EXPECT_FALSE(std::filesystem::exists(path()));
    write(fileWith(2));

    EXPECT_THAT(listener.hearUntil("state_changed 2"), ElementsAre("state_changed 2"));
}

TEST_F(PowerAnnouncementsTest, FileThatIsTakenAwayAnnouncesStateZero) {
    write(fileWith(2));
    PowerListener listener;
    std::filesystem::remove(path());

    EXPECT_THAT(listener.hearUntil("state_changed 0"), ElementsAre("state_changed 0"));
}

TEST_F(PowerAnnouncementsTest, EventAfterTheFileWasTakenAwayIsAnnounced) {
    KovanHost::announcePowerOff(3);
    PowerListener listener;
    std::filesystem::remove(path());
    KovanHost::announcePowerOff(3);

    EXPECT_THAT(listener.hearUntil("poweroff 3"), ElementsAre("poweroff 3"));
}

TEST_F(PowerAnnouncementsTest, MoreThanTheFileHoldsEndsInTheRightState) {
    PowerListener listener;
    device_power_set_state(1, 0);
    for (int number = 0; number < 101; ++number) {
        KovanHost::announcePowerOff(number);
    }

    const std::vector<std::string>& heard = listener.hearUntil("state_changed 1");
    EXPECT_EQ(heard.size(), 101u);
    EXPECT_EQ(heard.front(), "poweroff 1");
    EXPECT_EQ(heard.back(), "state_changed 1");
}

namespace {

// Sends standard error to a file while the object lives.
class ErrorsInFile {
public:
    explicit ErrorsInFile(const std::filesystem::path& path) : m_before(dup(STDERR_FILENO)) {
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
        dup2(file, STDERR_FILENO);
        close(file);
    }
    ~ErrorsInFile() {
        dup2(m_before, STDERR_FILENO);
        close(m_before);
    }

private:
    const int m_before;
};

class PowerBadFileTest : public PowerAnnouncementsTest, public testing::WithParamInterface<std::string> {};

} // namespace

TEST_P(PowerBadFileTest, IsReportedOnceAndAnnouncesNothing) {
    device_power_set_state(2, 0);
    PowerListener listener;
    const ErrorsInFile errors(m_root / "errors");

    write(GetParam());
    EXPECT_TRUE(iterateUntil([&] { return m_root.read("errors") != ""; }));
    write(GetParam());
    EXPECT_EQ(device_power_get_state(), 2);
    KovanHost::announcePowerOff(3);

    EXPECT_THAT(listener.hearUntil("poweroff 3"), ElementsAre("poweroff 3"));
    EXPECT_THAT(m_root.read("errors"), testing::MatchesRegex(path() + ": [^\n]+; keeping what was known\n"));
}

INSTANTIATE_TEST_SUITE_P(BadFiles, PowerBadFileTest,
                         testing::Values("", "[power]\nstate=1\nwakeup_reas", "no key file\n",
                                         "[power]\nstate=-1\nwakeup_reason=0\n"));

namespace {

int unsubscribeYourself(int number, void* numbers) {
    append(number, numbers);
    return device_power_unsubscribe_poweroff(unsubscribeYourself);
}

int unsubscribeTheNext(int number, void* numbers) {
    append(number, numbers);
    return device_power_unsubscribe_poweroff(append);
}

int changeTheState(int, void*) {
    return device_power_set_state(2, 1);
}

int changeTheStateAndSubscribe(int, void* numbers) {
    device_power_set_state(2, 1);
    return device_power_subscribe_state_changed(append, numbers);
}

int subscribeAppend(int, void* numbers) {
    return device_power_subscribe_poweroff(append, numbers);
}

} // namespace

TEST_F(PowerAnnouncementsTest, CallbackMayUnsubscribeItself) {
    std::vector<int> numbers;
    ASSERT_EQ(device_power_subscribe_poweroff(unsubscribeYourself, &numbers), 0);
    KovanHost::announcePowerOff(1);
    KovanHost::announcePowerOff(2);
    EXPECT_TRUE(iterateUntil([&] { return !numbers.empty(); }));

    PowerListener listener;
    KovanHost::announcePowerOff(3);
    EXPECT_THAT(listener.hearUntil("poweroff 3"), ElementsAre("poweroff 3"));
    EXPECT_THAT(numbers, ElementsAre(1));
}

TEST_F(PowerAnnouncementsTest, CallbackThatAnotherUnsubscribesIsNotCalled) {
    std::vector<int> numbers;
    device_power_subscribe_poweroff(unsubscribeTheNext, &numbers);
    device_power_subscribe_poweroff(append, &numbers);
    KovanHost::announcePowerOff(1);
    KovanHost::announcePowerOff(2);
    EXPECT_TRUE(iterateUntil([&] { return numbers.size() == 2; }));

    EXPECT_THAT(numbers, ElementsAre(1, 2));
    device_power_unsubscribe_poweroff(unsubscribeTheNext);
}

TEST_F(PowerAnnouncementsTest, CallbackMayChangeTheState) {
    PowerListener listener;
    device_power_subscribe_poweroff(changeTheState, nullptr);
    KovanHost::announcePowerOff(3);

    EXPECT_THAT(listener.hearUntil("state_changed 2"), ElementsAre("poweroff 3", "state_changed 2"));
    device_power_unsubscribe_poweroff(changeTheState);
}

TEST_F(PowerAnnouncementsTest, SubscriberMadeByACallbackHearsWhatComesAfterIt) {
    std::vector<int> numbers;
    PowerListener listener;
    device_power_subscribe_poweroff(subscribeAppend, &numbers);
    KovanHost::announcePowerOff(1);
    listener.hearUntil("poweroff 1");
    KovanHost::announcePowerOff(2);
    EXPECT_TRUE(iterateUntil([&] { return !numbers.empty(); }));

    EXPECT_THAT(numbers, ElementsAre(2));
    device_power_unsubscribe_poweroff(subscribeAppend);
    device_power_unsubscribe_poweroff(append);
}

TEST_F(PowerAnnouncementsTest, SubscriberMadeByACallbackHearsNoStateFromBeforeIt) {
    std::vector<int> numbers;
    device_power_subscribe_poweroff(changeTheStateAndSubscribe, &numbers);
    KovanHost::announcePowerOff(3);
    EXPECT_TRUE(iterateUntil([] { return device_power_get_state() == 2; }));
    device_power_set_state(1, 0);
    EXPECT_TRUE(iterateUntil([&] { return !numbers.empty(); }));

    EXPECT_THAT(numbers, ElementsAre(1));
    device_power_unsubscribe_poweroff(changeTheStateAndSubscribe);
    device_power_unsubscribe_state_changed(append);
}

TEST_F(PowerAnnouncementsTest, MovesToAnotherRootWithTheFirstNewSubscriber) {
    { const PowerListener earlier; }
    std::filesystem::create_directory(m_root / "second");
    setenv("KOVAN_ROOT", (m_root / "second").c_str(), 1);
    PowerListener listener;
    device_power_set_state(1, 0);

    EXPECT_THAT(listener.hearUntil("state_changed 1"), ElementsAre("state_changed 1"));
    EXPECT_FALSE(std::filesystem::exists(path()));
}

namespace {

int keepThread(int, void* thread) {
    static_cast<std::atomic<std::thread::id>*>(thread)->store(std::this_thread::get_id());
    return 0;
}

} // namespace

TEST_F(PowerAnnouncementsTest, CallsOnTheDefaultContextWhoeverSubscribed) {
    std::atomic<std::thread::id> called;
    GMainContext* const own = g_main_context_new();
    std::thread subscriber([&] {
        g_main_context_push_thread_default(own);
        EXPECT_EQ(device_power_subscribe_poweroff(keepThread, &called), 0);
        g_main_context_pop_thread_default(own);
    });
    subscriber.join();
    KovanHost::announcePowerOff(3);

    EXPECT_TRUE(iterateUntil([&] { return called.load() != std::thread::id(); }));
    EXPECT_EQ(std::this_thread::get_id(), called.load());
    EXPECT_EQ(device_power_unsubscribe_poweroff(keepThread), 0);
    g_main_context_unref(own);
}
