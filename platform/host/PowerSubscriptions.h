#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <device_power.h>

#include "PowerMonitor.h"
#include "PowerRecords.h"

namespace KovanHost {

// This process's subscribers of the device's power. They hear what happens after their subscription, whichever process
// made it, on GLib's default main context and in the order in which it happened: every record among the announcements,
// and a state that is another one without a record. No lock is held while one is called. Any thread may call; the
// monitor is there while somebody is subscribed.
class PowerSubscriptions {
public:
    static constexpr int ALREADY_SUBSCRIBED = -17;
    static constexpr int NOT_SUBSCRIBED = -2;

    static PowerSubscriptions& get();

    // `signal` is a name of an announcement. 0 or one of the results above; std::exception when nothing can be heard.
    int subscribe(const std::string& signal, device_power_callback callback, void* userData);
    int unsubscribe(const std::string& signal, device_power_callback callback);

private:
    struct Subscription {
        std::string signal;
        device_power_callback callback;
        void* userData;
        std::int64_t heard; // the last announcement that it was called for, or did not need to hear
        int state;
    };
    struct Call {
        device_power_callback callback;
        void* userData;
        int number;
    };
    using Subscriptions = std::vector<Subscription>;

    static void announceNews();
    std::optional<Call> nextCall(const Power& power);
    Subscription* findHearerOf(const PowerRecord& announcement);
    Subscription* findUnawareOf(const Power& power);
    Subscriptions::iterator find(const std::string& signal, device_power_callback callback);

    std::mutex m_mutex;
    // Guarded by m_mutex.
    Subscriptions m_subscriptions;
    std::unique_ptr<PowerMonitor> m_monitor;
};

} // namespace KovanHost
