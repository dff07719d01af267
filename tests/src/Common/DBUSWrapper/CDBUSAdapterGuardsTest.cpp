// When the watchdogs of the loop are armed and disarmed, in one order with its passes, the requests and the pings.
#include <algorithm>
#include <future>

#include "AdapterFixture.h"
#include "GuardNotes.h"

namespace DAX::Tests {
namespace {

using testing::Contains;
using testing::ElementsAreArray;
using testing::Gt;

const char ARM_DISPATCH[] = "loop arm DispatchTimeGuard";
const char DISARM_DISPATCH[] = "loop disarm DispatchTimeGuard";
const char ARM_PING[] = "loop arm WatchdogPingGuard";
const char DISARM_PING[] = "loop disarm WatchdogPingGuard";
const char PASS[] = "loop pass";

using Entries = std::vector<std::string>;

// The entries of the journal that the predicate takes.
template <class Predicate>
Entries journalOf(Predicate predicate) {
    Entries entries = FakeKovan::journal();
    entries.erase(std::remove_if(entries.begin(), entries.end(), [&](const auto& entry) { return !predicate(entry); }),
                  entries.end());
    return entries;
}

// What the loop did in each of its passes.
std::vector<Entries> passes() {
    std::vector<Entries> result;
    for (const std::string& entry : FakeKovan::journal("loop")) {
        if (entry == PASS) {
            result.emplace_back();
        } else if (!result.empty()) {
            result.back().push_back(entry);
        }
    }
    return result;
}

class CDBUSAdapterGuardsTest : public AdapterFixture {
protected:
    CDBUSAdapterGuardsTest() { FakeKovan::setProduction(false); }
    ~CDBUSAdapterGuardsTest() override { stop(); } // before the fields below go

    // The first request waits until the given number of further ones is on its way: they come in one pass.
    void callTogether(int further) {
        std::promise<void> sent;
        std::promise<void> begun;
        handler->onRequest = [&, first = true](const FakeHandler::Request&, std::stringstream&, std::string&) mutable {
            if (std::exchange(first, false)) {
                begun.set_value();
                sent.get_future().wait();
            }
            return true;
        };
        RawPeer client;
        client.send(*makeCall("first"));
        begun.get_future().wait();
        std::uint32_t last = 0;
        for (int call = 0; call < further; ++call) {
            last = client.send(*makeCall("further"));
        }
        // The bus answers in order: once it answers this, all of them are on their way.
        EXPECT_TRUE(dbus_bus_name_has_owner(client.connection(), DBUS_SERVICE_DBUS, nullptr));
        sent.set_value();
        EXPECT_NE(client.waitForReply(last), nullptr);
        stop();
    }

private:
    GuardNotes m_notes;
};

TEST_F(CDBUSAdapterGuardsTest, WatchEachDispatchByItself) {
    start({60, 0, 0, nullptr});
    callTogether(5);
    const Entries entries = journalOf([](const std::string& entry) {
        return entry == ARM_DISPATCH || entry == DISARM_DISPATCH || entry.rfind("request ", 0) == 0;
    });
    int requests = 0;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (entries[i].rfind("request ", 0) == 0) {
            ++requests;
            EXPECT_EQ(entries.at(i - 1), ARM_DISPATCH) << i;
            EXPECT_EQ(entries.at(i + 1), DISARM_DISPATCH) << i;
        }
    }
    EXPECT_EQ(requests, 6);
    EXPECT_EQ(std::count(entries.begin(), entries.end(), ARM_DISPATCH),
              std::count(entries.begin(), entries.end(), DISARM_DISPATCH));
    EXPECT_EQ(entries.back(), DISARM_DISPATCH);
}

TEST_F(CDBUSAdapterGuardsTest, AreArmedAnewForThePingOnlyWhenItFired) {
    std::atomic<int> pings{0};
    start({1, 0, 1, [&pings] {
               FakeKovan::note("ping");
               ++pings;
           }});
    RawPeer client;
    const auto bound = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (pings < 2 && std::chrono::steady_clock::now() < bound) {
        client.call(*makeCall("any"));
    }
    stop();
    Entries expected{ARM_PING};
    for (int ping = 0; ping < pings; ++ping) {
        expected.insert(expected.end(), {"ping", DISARM_PING, ARM_PING});
    }
    expected.push_back(DISARM_PING);
    EXPECT_GE(pings, 2);
    EXPECT_THAT(journalOf([](const std::string& entry) {
                    return entry == ARM_PING || entry == DISARM_PING || entry == "ping";
                }),
                ElementsAreArray(expected));
}

// Without a ping function each look at the ping arms its guard anew, so that the looks can be counted.
TEST_F(CDBUSAdapterGuardsTest, AreArmedForThePingOnceForEachMessageOrOnceInAPassWithoutAny) {
    start({60, 0, 0, nullptr});
    callTogether(5);
    std::vector<std::ptrdiff_t> dispatchesOfPasses;
    for (const Entries& pass : passes()) {
        const auto dispatches = std::count(pass.begin(), pass.end(), ARM_DISPATCH);
        dispatchesOfPasses.push_back(dispatches);
        EXPECT_EQ(std::count(pass.begin(), pass.end(), ARM_PING), std::max<std::ptrdiff_t>(dispatches, 1));
    }
    EXPECT_THAT(dispatchesOfPasses, Contains(Gt(1))); // a pass with several messages was among them
}

} // namespace
} // namespace DAX::Tests
