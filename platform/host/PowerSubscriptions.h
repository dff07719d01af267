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

// This process's subscribers to the device's power. They are called for what happens after their subscription,
// whichever process caused it, on GLib's default main context and in the order of the events: for every announcement on
// record, and for a state that changed without a record. No lock is held during a call. Any thread may call; the
// monitor exists while somebody is subscribed.
class PowerSubscriptions {
public:
    static constexpr int ALREADY_SUBSCRIBED = -17;
    static constexpr int NOT_SUBSCRIBED = -2;

    // The one of this process. It is never destroyed, so it may be used until the very end.
    static PowerSubscriptions& get();

    // `signal` is the name of an announcement. Returns 0 or one of the results above. Throws a std::exception when the
    // power file cannot be watched.
    int subscribe(const std::string& signal, device_power_callback callback, void* userData);
    int unsubscribe(const std::string& signal, device_power_callback callback);

private:
    struct Subscription {
        std::string signal;
        device_power_callback callback;
        void* userData;
        std::int64_t heard; // the last announcement that it was called for or that came before its subscription
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
