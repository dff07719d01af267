// The library against the real daemon and the simulated core.
#include <algorithm>
#include <future>

#include <dax/client.h>
#include <gmock/gmock.h>

#include "support/WaitUntil.h"
#include "system/support/Desk.h"
#include "system/support/Scenarios.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using dax::Error;
using dax::Outcome;
using dax::Priority;
using dax::Refusal;
using dax::UpgradeType;
using std::chrono::milliseconds;

// The exception that the statement throws; the test fails without one.
template <class E, class Statement>
std::optional<E> thrown(const Statement& statement) {
    try {
        statement();
    } catch (const E& exception) {
        return exception;
    }
    ADD_FAILURE() << "nothing was thrown";
    return std::nullopt;
}

// Waits without pauses.
dax::Waiting quickly() {
    dax::Waiting waiting;
    waiting.interval = milliseconds(1);
    return waiting;
}

class ClientTest : public Test {
protected:
    ClientTest() { desk.play(QUICK); }

    // The reasons that the core was given for cancelling, oldest first.
    std::vector<std::string> cancelReasons() const {
        std::vector<std::string> reasons;
        for (const auto& call : desk.coreCalls()) {
            if (call["method"] == "cancelCoreTransaction") {
                reasons.push_back(call["arguments"]["reason"]);
            }
        }
        return reasons;
    }

    // The methods that the core is asked for by the statement.
    template <class Statement>
    std::vector<std::string> askedDuring(const Statement& statement) const {
        const std::size_t before = desk.coreMethods().size();
        statement();
        std::vector<std::string> methods = desk.coreMethods();
        methods.erase(methods.begin(), methods.begin() + static_cast<std::ptrdiff_t>(before));
        return methods;
    }

    Desk desk;
    dax::Client client{"library"};
};

TEST_F(ClientTest, TellsWhatTheCoreKnows) {
    EXPECT_EQ(client.version(), "1000");
    EXPECT_THAT(client.supportedTypes(), ElementsAre(UpgradeType::OTA, UpgradeType::OTN, UpgradeType::USB));
}

TEST_F(ClientTest, RunsAWholeUpgrade) {
    dax::Session session = client.request(Priority::MAIN_APPLICATION);
    dax::Transaction transaction = session.start(UpgradeType::OTN);
    EXPECT_EQ(transaction.isSearchPossible(), true);
    const dax::Found found = transaction.search("deep", quickly());
    EXPECT_EQ(found.outcome, Outcome::SUCCEEDED);
    ASSERT_TRUE(found.upgrade);
    EXPECT_EQ(found.upgrade->type, UpgradeType::OTN);
    EXPECT_THAT(found.upgrade->id, ElementsAre(0x0d, 0xa5));
    EXPECT_EQ(found.upgrade->version, "1100");
    EXPECT_EQ(std::string(found.upgrade->info.begin(), found.upgrade->info.end()),
              "<update><version>1100</version></update>");
    EXPECT_EQ(found.upgrade->kind, dax::UpgradeKind::REGULAR);
    EXPECT_EQ(found.upgrade->scope, 2);
    EXPECT_EQ(transaction.install({"main", "panel"}, quickly()), Outcome::SUCCEEDED);
    EXPECT_EQ(transaction.finalize({"main"}, true, quickly()), Outcome::SUCCEEDED);
    session.end("All is done.");
    EXPECT_THAT(cancelReasons(), ElementsAre(HasSubstr("All is done.")));
    EXPECT_FALSE(client.owner().has_value());
    const auto refusal = thrown<Refusal>([this] { client.request(Priority(100)); });
    EXPECT_EQ(refusal->reason(), Refusal::Reason::LOCKED);
    EXPECT_FALSE(refusal->owner());
}

TEST_F(ClientTest, GivesTheCoreWhatItIsGiven) {
    dax::Session session = client.request(Priority(6), dax::TransactionType(3));
    dax::Transaction transaction = session.start(UpgradeType::USB);
    transaction.search("deep", quickly());
    transaction.install({"panel", "main"}, quickly());
    transaction.finalize({"main"}, true, quickly());
    nlohmann::json given;
    for (const auto& call : desk.coreCalls()) {
        given[call["method"].get<std::string>()] = call["arguments"];
    }
    EXPECT_EQ(given["startSearching"]["searchParameter"], "deep");
    EXPECT_EQ(given["startInstallation"]["items"], nlohmann::json({"main", "panel"}));
    EXPECT_EQ(given["startFinalization"]["items"], nlohmann::json({"main"}));
    EXPECT_EQ(given["startFinalization"]["flag"], true);
}

TEST_F(ClientTest, TellsOfEachProgressAndOfTheLastOne) {
    dax::Session session = client.request(Priority::MAIN_APPLICATION);
    dax::Transaction transaction = session.start(UpgradeType::OTN);
    std::vector<dax::Progress> seen;
    dax::Waiting waiting = quickly();
    waiting.onProgress = [&seen](const dax::Progress& progress) { seen.push_back(progress); };
    transaction.search("", waiting);
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ(seen.back().state, dax::State::SUCCEEDED);
    EXPECT_EQ(seen.back().percent, 100);
    EXPECT_EQ(std::count_if(seen.begin(), seen.end(),
                            [](const auto& progress) { return progress.state != dax::State::IN_PROGRESS; }),
              1);
}

TEST_F(ClientTest, LetsAnExceptionOfItsCallbackPass) {
    dax::Session session = client.request(Priority::MAIN_APPLICATION);
    dax::Transaction transaction = session.start(UpgradeType::OTN);
    dax::Waiting waiting;
    waiting.onProgress = [](const dax::Progress&) { throw 7; };
    EXPECT_THROW(transaction.search("", waiting), int);
}

TEST_F(ClientTest, FindsModels) {
    dax::Session session = client.request(Priority::MAIN_APPLICATION);
    const dax::FoundModels found = session.start(UpgradeType::USB).searchModels(quickly());
    EXPECT_EQ(found.outcome, Outcome::SUCCEEDED);
    EXPECT_THAT(desk.coreMethods(), AllOf(Contains("startModelsSearching"), Contains("getModelsSearchResult")));
}

TEST_F(ClientTest, TellsOfAStepThatFailed) {
    desk.play(QUICK + std::string("result=failed\n"));
    dax::Session session = client.request(Priority::MAIN_APPLICATION);
    dax::Transaction transaction = session.start(UpgradeType::OTN);
    transaction.search("", quickly());
    transaction.install({}, quickly());
    EXPECT_EQ(transaction.finalize({}, false, quickly()), Outcome::FAILED);
}

TEST_F(ClientTest, RemembersWhenItSearchedLast) {
    EXPECT_EQ(client.lastSearch().has_value(), false);
    const auto before = std::chrono::system_clock::now() - std::chrono::seconds(2);
    client.request(Priority::MAIN_APPLICATION).start(UpgradeType::OTN).search("", quickly());
    const std::optional<dax::LocalTime> last = client.lastSearch();
    ASSERT_TRUE(last);
    EXPECT_THAT(last->toSystemTime(), AllOf(Gt(before), Lt(std::chrono::system_clock::now() + std::chrono::hours(1))));
}

TEST_F(ClientTest, NamesTheHolderInARefusal) {
    dax::Client other("updater");
    dax::Session held = other.request(Priority(6), dax::TransactionType(3));
    const auto refusal = thrown<Refusal>([this] { client.request(Priority(6)); });
    EXPECT_EQ(refusal->reason(), Refusal::Reason::HELD);
    ASSERT_TRUE(refusal->owner());
    EXPECT_EQ(refusal->owner()->clientName, "updater");
    EXPECT_EQ(refusal->owner()->priority, Priority(6));
    EXPECT_EQ(refusal->owner()->transactionType, dax::TransactionType(3));
    EXPECT_STREQ(refusal->what(), "The update service is refused: it is held by updater with priority 6.");
    EXPECT_EQ(thrown<Refusal>([&] { other.request(Priority(7)); })->reason(), Refusal::Reason::SAME_CLIENT);
    EXPECT_EQ(client.owner()->clientName, "updater");
    EXPECT_EQ(held.priority(), Priority(6));
}

TEST_F(ClientTest, IsRefusedByALockWithoutAName) {
    dax::Client other("installer");
    const dax::Lock lock = other.lock(Priority::MAIN_APPLICATION);
    const auto refusal = thrown<Refusal>([this] { client.request(Priority::MAIN_APPLICATION); });
    EXPECT_EQ(refusal->reason(), Refusal::Reason::LOCKED);
    EXPECT_EQ(refusal->owner().has_value(), false);
    EXPECT_STREQ(refusal->what(), "The update service is refused: a lock is in force.");
}

TEST_F(ClientTest, LosesTheServiceToAHigherPriority) {
    dax::Session session = client.request(Priority(3));
    dax::Transaction transaction = session.start(UpgradeType::OTN);
    dax::Client other("updater");
    dax::Session taken = other.request(Priority(4));
    EXPECT_EQ(thrown<Error>([&] { transaction.startSearch(); })->kind(), Error::Kind::TRANSACTION_INVALIDATED);
    EXPECT_EQ(thrown<Error>([&] { session.priority(); })->kind(), Error::Kind::UNKNOWN);
    taken.end();
    EXPECT_NO_THROW(client.request(Priority(3)));
}

// What the header tells of sessions that are taken away without a successor.
void expectThatTransactionsAloneTellOfTheEnd(dax::Session& session, dax::Transaction& transaction) {
    EXPECT_EQ(thrown<Error>([&] { transaction.startSearch(); })->kind(), Error::Kind::TRANSACTION_INVALIDATED);
    EXPECT_EQ(session.priority(), Priority(3));
    dax::Transaction next = session.start(UpgradeType::OTN);
    EXPECT_EQ(thrown<Error>([&] { next.startSearch(); })->kind(), Error::Kind::TRANSACTION_INVALIDATED);
}

TEST_F(ClientTest, LosesTheServiceToALockAndIsTheOwnerNoMore) {
    dax::Session session = client.request(Priority(3));
    dax::Transaction transaction = session.start(UpgradeType::OTN);
    dax::Client other("installer");
    dax::Lock lock = other.lock(Priority(4));
    expectThatTransactionsAloneTellOfTheEnd(session, transaction);
    EXPECT_EQ(client.owner().has_value(), false);
    lock.release();
    EXPECT_NO_THROW(client.request(Priority(3)));
    EXPECT_EQ(thrown<Error>([&] { session.end(); })->kind(), Error::Kind::UNKNOWN) << "another one came after it";
}

TEST_F(ClientTest, LosesTheServiceWithThePowerAndIsTheOwnerUntilTheSessionEnds) {
    dax::Session session = client.request(Priority(3));
    dax::Transaction transaction = session.start(UpgradeType::OTN);
    EXPECT_EQ(desk.run("kovanctl", {"power-mode", "1"}).end, ProcessEnd::exited(0));
    ASSERT_TRUE(desk.waitForMessage("Invalidate done."));
    expectThatTransactionsAloneTellOfTheEnd(session, transaction);
    EXPECT_EQ(client.owner()->clientName, "library");
    EXPECT_EQ(thrown<Refusal>([&] { client.request(Priority(5)); })->reason(), Refusal::Reason::SAME_CLIENT);
    session.end();
    EXPECT_EQ(client.owner().has_value(), false);
    EXPECT_NO_THROW(client.request(Priority(3)));
}

// The longest call, by which users choose their time-out.
TEST_F(ClientTest, AStartThatReplacesATransactionAsksTheCoreFourTimes) {
    dax::Session session = client.request(Priority(3));
    const dax::Transaction first = session.start(UpgradeType::OTN);
    EXPECT_THAT(askedDuring([&] { session.start(UpgradeType::OTN); }),
                ElementsAre("cancelCoreTransaction", "getCurrentVersion", "createTransaction", "helloMessage"));
}

TEST_F(ClientTest, AStartInANewSessionAsksTheCoreThreeTimes) {
    dax::Session session = client.request(Priority(3));
    const dax::Transaction first = session.start(UpgradeType::OTN);
    session.end();
    dax::Session next = client.request(Priority(3));
    EXPECT_THAT(askedDuring([&] { next.start(UpgradeType::OTN); }),
                ElementsAre("getCurrentVersion", "createTransaction", "helloMessage"));
}

TEST_F(ClientTest, GivesTheServiceBackWithTheObject) {
    for (int i = 0; i < 5; ++i) {
        client.request(Priority(3)).start(UpgradeType::OTN);
    }
    EXPECT_EQ(client.owner().has_value(), false);
    EXPECT_THAT(cancelReasons(), Each(HasSubstr("The client has finished.")));
}

TEST_F(ClientTest, ASessionOutlivesItsClient) {
    auto other = std::make_unique<dax::Client>("updater");
    dax::Session session = other->request(Priority(3));
    other.reset();
    dax::Transaction transaction = session.start(UpgradeType::OTN);
    EXPECT_EQ(transaction.search("", quickly()).outcome, Outcome::SUCCEEDED);
}

TEST_F(ClientTest, AStopCancelsAtTheCoreAtOnceWithItsReason) {
    desk.play("[search]\nseconds=1000\n");
    dax::Session session = client.request(Priority(3));
    dax::Transaction transaction = session.start(UpgradeType::OTN);
    dax::StopSource stop;
    dax::Waiting waiting;
    waiting.interval = std::chrono::hours(1);
    waiting.stop = stop.token();
    auto found = std::async(std::launch::async, [&] { return transaction.search("", waiting); });
    ASSERT_TRUE(desk.waitForCoreCall("getSearchProgress"));
    stop.requestStop("It is enough.");
    EXPECT_EQ(found.get().outcome, Outcome::STOPPED);
    EXPECT_THAT(cancelReasons(), ElementsAre(HasSubstr("It is enough.")));
}

TEST_F(ClientTest, AStopBeforeAStepStartsNothing) {
    dax::Session session = client.request(Priority(3));
    dax::Transaction transaction = session.start(UpgradeType::OTN);
    dax::StopSource stop;
    stop.requestStop();
    dax::Waiting waiting;
    waiting.stop = stop.token();
    EXPECT_EQ(transaction.search("", waiting).outcome, Outcome::STOPPED);
    EXPECT_THAT(desk.coreMethods(), Not(Contains("startSearching")));
}

TEST_F(ClientTest, AsksForNoResultBeforeTheEndOfTheSearch) {
    desk.play("[search]\nseconds=1000\n");
    dax::Session session = client.request(Priority(3));
    dax::Transaction transaction = session.start(UpgradeType::OTN);
    EXPECT_THROW(transaction.searchResult(), std::logic_error);
    transaction.startSearch();
    EXPECT_EQ(transaction.searchProgress().state, dax::State::IN_PROGRESS);
    EXPECT_THROW(transaction.searchResult(), std::logic_error);
    EXPECT_THROW(transaction.install(), std::logic_error);
    EXPECT_EQ(session.priority(), Priority(3)) << "the service has not survived the question";
}

TEST_F(ClientTest, MovedFromObjectsSaySo) {
    dax::Session session = client.request(Priority(3));
    const dax::Session taken = std::move(session);
    EXPECT_THROW(session.priority(), std::logic_error); // NOLINT(bugprone-use-after-move): what is tested
}

TEST_F(ClientTest, SchedulesAFactoryReset) {
    client.scheduleFactoryReset();
    EXPECT_THAT(desk.coreMethods(), Contains("scheduleFactoryReset"));
}

TEST_F(ClientTest, ALockIsReleasedWithTheObject) {
    {
        const dax::Lock lock = client.lock(Priority::MAIN_APPLICATION);
        EXPECT_EQ(lock.id(), 1U);
    }
    EXPECT_EQ(desk.countMessages("External lock 1 is being released by library"), 1);
}

TEST_F(ClientTest, LocksCanBeHeldByTheirNumbers) {
    const dax::LockId id = client.acquireLock(Priority::MAIN_APPLICATION);
    EXPECT_EQ(client.lock(Priority(2)).detach(), id + 1);
    dax::Client other("other");
    EXPECT_EQ(thrown<Error>([&] { other.releaseLock(id); })->text(), "External lock owned by other client.");
    client.releaseLock(id);
    client.releaseLock(id + 1);
    EXPECT_EQ(thrown<Error>([&] { client.releaseLock(id); })->kind(), Error::Kind::UNKNOWN);
}

TEST_F(ClientTest, ALockIsDeniedWhileAClientOfItsPriorityHoldsTheService) {
    dax::Client other("updater");
    const dax::Session session = other.request(Priority(6));
    EXPECT_EQ(thrown<Error>([this] { client.lock(Priority(6)); })->kind(), Error::Kind::EXTERNAL_LOCK_DENIED);
    EXPECT_EQ(thrown<Error>([this] { client.acquireLock(Priority(6)); })->name(), "ExternalLockDenied");
}

TEST_F(ClientTest, AWholeUpgradeSurvivesAServiceThatEndsByStartingAnew) {
    for (int step = 0; step < 3; ++step) {
        dax::Session session = client.request(Priority(3));
        dax::Transaction transaction = session.start(UpgradeType::OTN);
        if (step > 0) {
            transaction.search("", quickly());
        }
        if (step > 1) {
            transaction.install({}, quickly());
        }
        desk.killDaemon();
        EXPECT_EQ(thrown<Error>([&] { transaction.searchProgress(); })->kind(), Error::Kind::TRANSACTION_INVALIDATED);
    }
    EXPECT_EQ(client.version(), "1000");
}

TEST_F(ClientTest, LogsToItsCallbackAloneAndOnItsThread) {
    std::vector<std::string> lines;
    dax::Options options;
    options.log = [&lines](dax::LogLevel level, const std::string& text) {
        EXPECT_EQ(level, text.find("[INF]") != std::string::npos ? dax::LogLevel::INF : dax::LogLevel::DBG);
        lines.push_back(text);
    };
    internal::CaptureStderr();
    dax::Client talkative("talkative", options);
    EXPECT_THROW(talkative.releaseLock(7), Error);
    client.owner();
    EXPECT_EQ(internal::GetCapturedStderr(), "");
    EXPECT_THAT(lines, Contains(HasSubstr("New DBUSProxy for object: /org/kovan/tv/dax/service/cservicemanager")));
    EXPECT_THAT(lines, Contains(HasSubstr("Remote method 'releaseExternalLock' raised")));
    const std::size_t count = lines.size();
    client.owner();
    EXPECT_EQ(lines.size(), count);
}

class CoreFailure : public ClientTest, public WithParamInterface<std::pair<const char*, Error::Kind>> {};

TEST_P(CoreFailure, HasItsKindItsSupportCodeAndItsText) {
    desk.play(withFault("startInstallation",
                        std::string("exception=") + GetParam().first + "\nsupport_code=E-42\ntext=It is broken."));
    dax::Session session = client.request(Priority(3));
    dax::Transaction transaction = session.start(UpgradeType::OTN);
    transaction.search("", quickly());
    const auto error = thrown<Error>([&] { transaction.install(); });
    EXPECT_EQ(error->kind(), GetParam().second);
    EXPECT_EQ(error->name(), GetParam().first);
    EXPECT_EQ(error->supportCode(), "E-42");
    EXPECT_EQ(error->text(), "It is broken.");
    EXPECT_THAT(error->diagnostic(), StartsWith("Remote method 'startInstallation' raised '"));
    EXPECT_EQ(error->what(),
              std::string("The update service reports ") + GetParam().first + " (support code E-42): It is broken.");
}

INSTANTIATE_TEST_SUITE_P(OfEveryKind, CoreFailure,
                         Values(std::pair("TransactionInvalidatedException", Error::Kind::TRANSACTION_INVALIDATED),
                                std::pair("CUpdateFailed", Error::Kind::UPDATE_FAILED),
                                std::pair("CUSBReadError", Error::Kind::USB_READ_ERROR),
                                std::pair("CNetworkTransferError", Error::Kind::NETWORK_TRANSFER_ERROR),
                                std::pair("CUSBImageCorrupted", Error::Kind::USB_IMAGE_CORRUPTED),
                                std::pair("CUSBDecryptionError", Error::Kind::USB_DECRYPTION_ERROR),
                                std::pair("CImageCorrupted", Error::Kind::IMAGE_CORRUPTED),
                                std::pair("CWrongKeys", Error::Kind::WRONG_KEYS),
                                std::pair("CImageLacksIntegrity", Error::Kind::IMAGE_LACKS_INTEGRITY),
                                std::pair("ExternalLockDenied", Error::Kind::EXTERNAL_LOCK_DENIED),
                                std::pair("CWildcardImageNotAllowedException", Error::Kind::WILDCARD_IMAGE_NOT_ALLOWED),
                                std::pair("InsufficientRWStorageSpace", Error::Kind::INSUFFICIENT_STORAGE),
                                std::pair("DAXUnknownException", Error::Kind::UNKNOWN)),
                         [](const auto& row) { return std::string(row.param.first); });

} // namespace
} // namespace DAX::Tests
