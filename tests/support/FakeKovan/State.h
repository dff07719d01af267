#pragma once

#include <condition_variable>
#include <map>
#include <mutex>

#include <device_power.h>

#include "support/FakeKovan.h"

namespace FakeKovan {

// All that the fake holds. `mutex` guards everything.
struct State {
    std::mutex mutex;
    std::condition_variable logged;

    struct Power {
        struct Subscription {
            device_power_callback callback;
            void* userData;
        };
        struct Signal {
            std::vector<Subscription> subscriptions;
            int subscribeResult = 0;
            int unsubscribeResult = 0;
        };
        std::map<PowerSignal, Signal> signals;

        int state = 0;
        int setStateResult = 0;
        int wakeUpReason = 0;
        int setWakeUpReasonResult = 0;
        int rebootResult = 0;
        int poweroffResult = 0;
    };

    struct SystemInfo {
        std::map<std::string, SystemInfoValue> values;
        std::map<std::string, int> failures;
        std::vector<std::string> reads;
    };

    struct Plantcfg {
        int resetResult = 1;
        int model = 0;
        int modelResult = 1;
        int localset = 0;
        int localsetResult = 1;
    };

    struct Usb {
        std::vector<UsbDevice> devices;
        int initResult = 0;
        int listResult = 0;
        std::optional<int> count;
        std::optional<std::pair<int, int>> walkFailure; // the position and the result
    };

    struct Content {
        std::vector<std::string> journal;
        std::vector<LogLine> logLines;
        bool echoLog = false;
        std::map<std::string, std::function<void()>> functionsAfterMessages;

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

        std::map<int, std::string> directories = {{3, "/shared"}, {6, "/reserved"}, {7, "/bin"},
                                                  {10, "/usb"},   {27, "/bigtemp"}, {28, "/apps"}};

        Power power;
        SystemInfo systemInfo;
        Plantcfg plantcfg;
        Usb usb;
    } content;

    // Never destroyed, since objects that outlive main may still log.
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
