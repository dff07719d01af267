#pragma once

#include <condition_variable>
#include <map>
#include <mutex>

#include "support/FakeKovan.h"

namespace FakeKovan {

// All that the fake holds. `mutex` guards everything.
struct State {
    std::mutex mutex;
    std::condition_variable logged;

    struct Content {
        std::vector<std::string> journal;
        std::vector<LogLine> logLines;
        bool echoLog = false;

        std::map<std::string, Value> settings;
        std::map<std::string, int> readFailures;
        std::map<std::string, int> writeFailures;
        std::vector<Write> writes;
        std::vector<std::string> reads;

        std::vector<Event> events;
        int eventResult = 1;

        std::vector<int> hangguardRegistrations;
        int hangguardRegisterResult = 0;
        int hangguardNotifications = 0;
        int hangguardNotifyResult = 0;

        int vipCalls = 0;
        int vipResult = 0;

        int bootclockInits = 0;
        int bootclockFinis = 0;
        int bootclockInitResult = 0;
        std::uint64_t localTime = 0;
        std::int64_t secondsAheadOfUTC = 0;

        bool production = false;
    } content;

    // Never destroyed: what outlives main may still log.
    static State& get();
};

// Runs `access` on the content, under the lock, and returns what it returns.
template <class Access>
auto locked(Access access) {
    State& state = State::get();
    const std::lock_guard<std::mutex> lock(state.mutex);
    return access(state.content);
}

} // namespace FakeKovan
