#include "PowerSubscriptions.h"

#include <algorithm>

#include "Border.h"
#include "PowerFile.h"

namespace KovanHost {

PowerSubscriptions& PowerSubscriptions::get() {
    static PowerSubscriptions& subscriptions =
        *std::make_unique<PowerSubscriptions>().release(); // outlives static destructors
    return subscriptions;
}

int PowerSubscriptions::subscribe(const std::string& signal, device_power_callback callback, void* userData) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (find(signal, callback) != m_subscriptions.end()) {
        return ALREADY_SUBSCRIBED;
    }
    if (m_monitor == nullptr) {
        m_monitor = std::make_unique<PowerMonitor>(&announceNews);
    }
    const Power power = knownPower(); // the monitor reports what happens after this
    m_subscriptions.push_back({signal, callback, userData, lastSequence(power.announcements), power.state});
    return 0;
}

int PowerSubscriptions::unsubscribe(const std::string& signal, device_power_callback callback) {
    std::unique_ptr<PowerMonitor> unneeded;
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = find(signal, callback);
    if (found == m_subscriptions.end()) {
        return NOT_SUBSCRIBED;
    }
    m_subscriptions.erase(found);
    if (m_subscriptions.empty()) {
        unneeded = std::move(m_monitor);
    }
    return 0;
}

void PowerSubscriptions::announceNews() {
    atBorder(false, [] {
        const Power power = knownPower();
        while (const std::optional<Call> call = get().nextCall(power)) {
            call->callback(call->number, call->userData);
        }
        return true;
    });
}

std::optional<PowerSubscriptions::Call> PowerSubscriptions::nextCall(const Power& power) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const PowerRecord& announcement : power.announcements) {
        if (Subscription* const hearer = findHearerOf(announcement)) {
            hearer->heard = announcement.sequence;
            hearer->state = announcement.number;
            return Call{hearer->callback, hearer->userData, announcement.number};
        }
    }
    if (Subscription* const unaware = findUnawareOf(power)) {
        unaware->state = power.state;
        return Call{unaware->callback, unaware->userData, power.state};
    }
    return std::nullopt;
}

PowerSubscriptions::Subscription* PowerSubscriptions::findHearerOf(const PowerRecord& announcement) {
    const auto found = std::find_if(m_subscriptions.begin(), m_subscriptions.end(), [&](const Subscription& candidate) {
        return candidate.signal == announcement.name && candidate.heard < announcement.sequence;
    });
    return found != m_subscriptions.end() ? &*found : nullptr;
}

// Leaves out whoever subscribed after `power` was read and so knows more.
PowerSubscriptions::Subscription* PowerSubscriptions::findUnawareOf(const Power& power) {
    const std::int64_t last = lastSequence(power.announcements);
    const auto found = std::find_if(m_subscriptions.begin(), m_subscriptions.end(), [&](const Subscription& candidate) {
        return candidate.signal == STATE_CHANGED && candidate.state != power.state && candidate.heard <= last;
    });
    return found != m_subscriptions.end() ? &*found : nullptr;
}

PowerSubscriptions::Subscriptions::iterator PowerSubscriptions::find(const std::string& signal,
                                                                     device_power_callback callback) {
    return std::find_if(m_subscriptions.begin(), m_subscriptions.end(), [&](const Subscription& candidate) {
        return candidate.signal == signal && candidate.callback == callback;
    });
}

} // namespace KovanHost
