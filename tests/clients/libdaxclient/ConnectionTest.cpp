// How the library gets to the service: addresses, time-outs, identities, threads.
#include <atomic>
#include <filesystem>
#include <future>
#include <set>

#include <gmock/gmock.h>

#include "FakeService.h"
#include "Steps.h"
#include "support/PrivateBus.h"
#include "support/SilentBus.h"
#include "support/TemporaryRoot.h"
#include "support/WaitUntil.h"
#include "support/WireGoldens.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using std::chrono::milliseconds;
using Reason = dax::Unreachable::Reason;

template <class Statement>
dax::Unreachable unreachableBy(const Statement& statement) {
    try {
        statement();
    } catch (const dax::Unreachable& failure) {
        return failure;
    }
    ADD_FAILURE() << "the service was reached";
    return {Reason::NO_BUS, "", "", ""};
}

TEST(Connection, ToABusThatDoesNotExistIsToldAsSuch) {
    const TemporaryRoot root;
    dax::Options options;
    options.busAddress = "unix:path=" + (root / "no-bus").string();
    const dax::Unreachable failure = unreachableBy([&] { dax::Client client("me", options); });
    EXPECT_EQ(failure.reason(), Reason::NO_BUS);
    EXPECT_THAT(failure.busError(), StartsWith("org.freedesktop.DBus.Error."));
    EXPECT_THAT(failure.text(), HasSubstr("No such file or directory"));
    EXPECT_THAT(failure.what(), StartsWith("The message bus cannot be reached: "));
}

TEST(Connection, ToAnAddressThatIsNoneIsToldAsSuch) {
    dax::Options options;
    options.busAddress = "somewhere";
    EXPECT_EQ(unreachableBy([&] { dax::Client client("me", options); }).reason(), Reason::NO_BUS);
}

TEST(Connection, TakesTheAddressThatItIsGiven) {
    const PrivateBus bus(PrivateBus::Kind::SESSION);
    dax::Options options;
    options.busAddress = bus.address();
    dax::Client client("me", options);
    const dax::Unreachable failure = unreachableBy([&] { client.version(); });
    EXPECT_EQ(failure.reason(), Reason::NO_SERVICE);
    EXPECT_EQ(failure.busError(), "org.freedesktop.DBus.Error.ServiceUnknown");
}

class ConnectionToASilentBus : public TestWithParam<SilentBus::Kind> {};

TEST_P(ConnectionToASilentBus, EndsAfterTheTimeOut) {
    const SilentBus bus(GetParam());
    dax::Options options;
    options.busAddress = bus.address();
    options.callTimeout = milliseconds(300);
    const auto begin = std::chrono::steady_clock::now();
    const dax::Unreachable failure = unreachableBy([&] { dax::Client client("me", options); });
    EXPECT_EQ(failure.reason(), Reason::TIMED_OUT);
    EXPECT_EQ(failure.busError(), "org.freedesktop.DBus.Error.Timeout");
    EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(300));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

INSTANTIATE_TEST_SUITE_P(OfEachKind, ConnectionToASilentBus,
                         Values(SilentBus::Kind::HAS_ROOM, SilentBus::Kind::IS_FULL));

TEST(Connection, NeedsATimeOutThatIsOne) {
    dax::Options options;
    options.callTimeout = milliseconds(0);
    EXPECT_THROW(dax::Client("me", options), std::invalid_argument);
}

class ConnectionTest : public Test {
protected:
    PrivateBus bus;
    FakeService service;
};

TEST_F(ConnectionTest, ThatBreaksIsTheBussFault) {
    dax::Client client("me");
    bus.stop();
    const dax::Unreachable failure = unreachableBy([&] { client.version(); });
    EXPECT_EQ(failure.reason(), Reason::NO_BUS);
    EXPECT_EQ(failure.busError(), "org.freedesktop.DBus.Error.Disconnected");
}

TEST_F(ConnectionTest, TellsWhetherTheServiceRunsAndDoesNotAskIt) {
    dax::Client client("me");
    EXPECT_TRUE(client.isServiceRunning());
    service.leaveAt("getCurrentVersion");
    EXPECT_THROW(client.version(), dax::Unreachable);
    EXPECT_FALSE(client.isServiceRunning());
    bus.stop();
    EXPECT_EQ(unreachableBy([&] { client.isServiceRunning(); }).reason(), Reason::NO_BUS);
}

TEST_F(ConnectionTest, TellsAFullBusFromAMissingPermission) {
    dax::Client client("me");
    service.answer("getCurrentVersion", FakeService::error("org.freedesktop.DBus.Error.LimitsExceeded", "Too much."));
    const dax::Unreachable full = unreachableBy([&] { client.version(); });
    EXPECT_EQ(full.reason(), Reason::NOT_ALLOWED);
    EXPECT_EQ(full.busError(), "org.freedesktop.DBus.Error.LimitsExceeded");
    EXPECT_STREQ(full.what(), "The message bus has no room for the call now: Too much.");
    service.answer("getCurrentVersion", FakeService::error("org.freedesktop.DBus.Error.AccessDenied", "Not you."));
    EXPECT_STREQ(unreachableBy([&] { client.version(); }).what(),
                 "This program may not call the update service: Not you.");
}

TEST_F(ConnectionTest, IsUsableAfterATimeOut) {
    dax::Options options;
    options.callTimeout = milliseconds(100);
    dax::Client client = inTime([&options] { return dax::Client("me", options); });
    service.answer("getCurrentVersion", FakeService::nothing());
    EXPECT_EQ(unreachableBy([&] { client.version(); }).reason(), Reason::TIMED_OUT);
    service.answerWell("getCurrentVersion");
    EXPECT_EQ(inTime([&] { return client.version(); }), "17.037.0");
}

// Whoever destroys the objects of a service that has ended wants nothing of a new one.
TEST_F(ConnectionTest, ThatEndsStartsNoServiceAnew) {
    const TemporaryRoot root;
    bus.addService("org.kovan.tv.dax.service.servicemanager",
                   "/bin/sh -c 'touch " + (root / "started").string() + "; exit 1'"); // at once, so that nobody waits
    auto open = std::make_unique<OpenClient>();
    auto lock = std::make_unique<dax::Lock>(open->client.lock(dax::Priority(4)));
    service.leaveAt("getCurrentVersion");
    EXPECT_THROW(open->client.version(), dax::Unreachable);
    ASSERT_TRUE(waitUntil([&open] { return !open->client.isServiceRunning(); }));
    lock.reset();
    open.reset();
    EXPECT_FALSE(std::filesystem::exists(root / "started"));
    EXPECT_THROW(dax::Client("another").version(), dax::Unreachable);
    EXPECT_TRUE(std::filesystem::exists(root / "started")) << "the bus starts none anyway";
}

TEST_F(ConnectionTest, ClaimsItsSessionsByIdsThatNobodyCanGuess) {
    dax::Client client("me");
    std::set<std::string> ids;
    for (int i = 0; i < 50; ++i) {
        client.request(dax::Priority(4)).start(dax::UpgradeType::OTN);
    }
    for (const std::string& hello : service.callsOf("helloMessage")) {
        const auto id = std::get<0>(decode<std::string>(hello));
        EXPECT_THAT(id, MatchesRegex("[0-9a-f]{32}"));
        ids.insert(id);
    }
    EXPECT_EQ(ids.size(), 100U);
}

TEST_F(ConnectionTest, SaysTheNumbersThatItIsGiven) {
    dax::Client client("me");
    client.request(dax::Priority(-7), dax::TransactionType(11)).start(dax::UpgradeType(12));
    const auto [priority, name, type] = decode<int, std::string, int>(service.callsOf("getService").front());
    EXPECT_EQ(priority, -7);
    EXPECT_EQ(name, "me");
    EXPECT_EQ(type, 11);
    EXPECT_EQ(std::get<0>(decode<int>(service.callsOf("startNewTransaction").front())), 12);
}

TEST_F(ConnectionTest, TellsTheTimeOfTheLastSearchInEveryUnit) {
    dax::Client client("me");
    const std::optional<dax::LocalTime> time = client.lastSearch();
    ASSERT_TRUE(time);
    EXPECT_EQ(time->toString(), "2024-02-29T23:59:58");
    setenv("TZ", "UTC", 1);
    EXPECT_EQ(time->toSystemTime().time_since_epoch(), std::chrono::seconds(1709251198));
}

TEST_F(ConnectionTest, TakesWhatIsNoTimeForNone) {
    dax::Client client("me");
    service.answer("getLastSearchingForUpgradeDate",
                   FakeService::archive("22 serialization::archive 18 0 1 1 0 0 0 0 15 not-a-date-time\n"));
    EXPECT_FALSE(client.lastSearch().has_value());
}

TEST(LocalTime, ShowsAFractionInMicroseconds) {
    dax::LocalTime time;
    time.fraction = std::chrono::microseconds(45);
    EXPECT_EQ(time.toString(), "1970-01-01T00:00:00.000045");
}

class LocalTimeInUtc : public Test {
protected:
    LocalTimeInUtc() { setenv("TZ", "UTC", 1); }

    static dax::LocalTime at(int year, int month, int day) {
        dax::LocalTime time;
        time.year = year;
        time.month = month;
        time.day = day;
        return time;
    }
};

TEST_F(LocalTimeInUtc, BecomesAPointOfTheSystemsClockToItsLimits) {
    dax::LocalTime last = at(2262, 4, 11);
    last.hour = 23;
    last.fraction = std::chrono::microseconds(999999);
    EXPECT_EQ(last.toSystemTime().time_since_epoch(),
              std::chrono::seconds(9223369200) + std::chrono::microseconds(999999));
    EXPECT_EQ(at(1677, 9, 22).toSystemTime().time_since_epoch(), std::chrono::seconds(-9223286400));
    dax::LocalTime beforeTheEpoch = at(1969, 12, 31);
    beforeTheEpoch.hour = 23;
    beforeTheEpoch.minute = 59;
    beforeTheEpoch.second = 59;
    EXPECT_EQ(beforeTheEpoch.toSystemTime().time_since_epoch(), std::chrono::seconds(-1));
}

TEST_F(LocalTimeInUtc, ThatTheSystemsClockCannotHoldIsOutOfRange) {
    for (const dax::LocalTime& time : {at(1400, 1, 1), at(1677, 9, 21), at(2262, 4, 12), at(9999, 12, 31)}) {
        EXPECT_THROW(time.toSystemTime(), std::out_of_range) << time.toString();
    }
}

TEST_F(ConnectionTest, AStartWithoutATransactionIsARefusal) {
    dax::Client client("me");
    dax::Session session = client.request(dax::Priority(4));
    service.answer("startNewTransaction", FakeService::archive("22 serialization::archive 18 0 \n"));
    try {
        session.start(dax::UpgradeType::OTN);
        FAIL() << "a transaction was started";
    } catch (const dax::Refusal& refusal) {
        EXPECT_EQ(refusal.reason(), dax::Refusal::Reason::SESSION_OVER);
        EXPECT_STREQ(refusal.what(), "The update service is refused: the session is no longer valid.");
    }
}

TEST_F(ConnectionTest, AsksAgainUntilAStepHasEnded) {
    OpenClient open;
    std::atomic<int> asked{0};
    service.answer("getInstallationProgress", [&asked](DBusMessage& call) {
        const char* const states[] = {"0", "1", "77", "2"};
        return FakeService::archive("22 serialization::archive 18 0 0 " + std::string(states[asked++]) +
                                    " 5 0 1 0\n")(call);
    });
    dax::Waiting waiting;
    waiting.interval = milliseconds(0);
    EXPECT_EQ(open.transaction.install({}, waiting), dax::Outcome::SUCCEEDED);
    EXPECT_EQ(asked, 4);
}

TEST_F(ConnectionTest, AsksOnceInTheLongestIntervalThereIs) {
    OpenClient open;
    service.answer("getInstallationProgress", FakeService::archive("22 serialization::archive 18 0 0 1 5 0 1 0\n"));
    dax::StopSource stop;
    dax::Waiting waiting;
    waiting.interval = milliseconds::max();
    waiting.stop = stop.token();
    auto outcome = std::async(std::launch::async, [&] { return open.transaction.install({}, waiting); });
    ASSERT_TRUE(service.waitForCall("getInstallationProgress"));
    EXPECT_EQ(outcome.wait_for(milliseconds(100)), std::future_status::timeout);
    stop.requestStop();
    EXPECT_EQ(outcome.get(), dax::Outcome::STOPPED);
    EXPECT_EQ(service.callsOf("getInstallationProgress").size(), 1U);
}

// What the contract allows, for the thread sanitizer to look at.
TEST_F(ConnectionTest, MayBeUsedByManyThreads) {
    OpenClient open;
    std::vector<std::future<void>> threads;
    for (int i = 0; i < 4; ++i) {
        threads.push_back(std::async(std::launch::async, [&open, i] {
            for (int j = 0; j < 20; ++j) {
                EXPECT_EQ(open.client.version(), "17.037.0");
                open.session.priority();
                open.transaction.searchProgress();
                open.transaction.searchResult();
                dax::Client own("thread " + std::to_string(i));
                own.request(dax::Priority(i)).start(dax::UpgradeType::OTN).search();
                open.client.lock(dax::Priority(i)).isLost();
            }
        }));
    }
    for (auto& thread : threads) {
        thread.get();
    }
}

TEST_F(ConnectionTest, LetsAnotherThreadCancelWhileOneWaits) {
    service.answer("getSearchProgress", FakeService::archive("22 serialization::archive 18 0 0 1 5 0 1 0\n"));
    dax::Client client("me");
    dax::Session session = client.request(dax::Priority(4));
    dax::Transaction transaction = session.start(dax::UpgradeType::OTN);
    dax::StopSource stop;
    dax::Waiting waiting;
    waiting.stop = stop.token();
    waiting.interval = milliseconds(1);
    auto found = std::async(std::launch::async, [&] { return transaction.search("", waiting); });
    ASSERT_TRUE(service.waitForCall("getSearchProgress"));
    transaction.cancel("by hand");
    stop.requestStop("by token");
    EXPECT_EQ(found.get().outcome, dax::Outcome::STOPPED);
    std::vector<std::string> reasons;
    for (const std::string& call : service.callsOf("cancelServiceTransaction")) {
        reasons.push_back(std::get<0>(decode<std::string>(call)));
    }
    EXPECT_THAT(reasons, ElementsAre("by hand", "by token"));
}

TEST(StopToken, KeepsTheFirstReason) {
    const dax::StopSource source;
    const dax::StopToken token = source.token();
    EXPECT_FALSE(token.isStopped());
    EXPECT_EQ(token.reason(), "");
    dax::StopSource(source).requestStop("first");
    dax::StopSource(source).requestStop("second");
    EXPECT_TRUE(token.isStopped());
    EXPECT_EQ(token.reason(), "first");
    EXPECT_TRUE(token.waitFor(std::chrono::hours(1)));
}

TEST(StopToken, WaitsForTheLongestTimeThereIs) {
    dax::StopSource source;
    auto stopped =
        std::async(std::launch::async, [token = source.token()] { return token.waitFor(milliseconds::max()); });
    EXPECT_EQ(stopped.wait_for(milliseconds(100)), std::future_status::timeout) << "it has not waited";
    source.requestStop();
    EXPECT_TRUE(stopped.get());
}

TEST(StopToken, DoesNotWaitForATimeThatHasPassed) {
    const dax::StopSource source;
    EXPECT_FALSE(source.token().waitFor(milliseconds::min()));
    EXPECT_FALSE(dax::StopToken().waitFor(milliseconds::min()));
}

TEST(StopToken, OfNoSourceIsNeverStopped) {
    EXPECT_FALSE(dax::StopToken().waitFor(milliseconds(1)));
    EXPECT_EQ(dax::StopToken().reason(), "");
}

} // namespace
} // namespace DAX::Tests
