#include <algorithm>

#include <device_power.h>

#include "support/FakeKovan/State.h"

namespace FakeKovan {
namespace {

using Power = State::Power;
using Subscriptions = std::vector<Power::Subscription>;

const char* nameOf(PowerSignal signal) {
    switch (signal) {
    case PowerSignal::STATE_CHANGED:
        return "state_changed";
    case PowerSignal::POWER_OFF:
        return "poweroff";
    case PowerSignal::POST_WAKEUP:
        break;
    }
    return "post_wakeup";
}

Subscriptions::iterator find(Subscriptions& subscriptions, device_power_callback callback) {
    return std::find_if(subscriptions.begin(), subscriptions.end(),
                        [callback](const Power::Subscription& candidate) { return candidate.callback == callback; });
}

int subscribe(PowerSignal signal, device_power_callback callback, void* userData) {
    return locked([=](State::Content& content) {
        content.journal.push_back(std::string("power subscribe ") + nameOf(signal));
        Power::Signal& pair = content.power.signals[signal];
        if (pair.subscribeResult != 0) {
            return pair.subscribeResult;
        }
        if (find(pair.subscriptions, callback) != pair.subscriptions.end()) {
            return ALREADY_SUBSCRIBED;
        }
        pair.subscriptions.push_back({callback, userData});
        return 0;
    });
}

int unsubscribe(PowerSignal signal, device_power_callback callback) {
    return locked([=](State::Content& content) {
        content.journal.push_back(std::string("power unsubscribe ") + nameOf(signal));
        Power::Signal& pair = content.power.signals[signal];
        if (pair.unsubscribeResult != 0) {
            return pair.unsubscribeResult;
        }
        const auto found = find(pair.subscriptions, callback);
        if (found == pair.subscriptions.end()) {
            return NOT_SUBSCRIBED;
        }
        pair.subscriptions.erase(found);
        return 0;
    });
}

Subscriptions subscriptionsOf(PowerSignal signal) {
    return locked([signal](State::Content& content) { return content.power.signals[signal].subscriptions; });
}

bool isSubscribed(PowerSignal signal, device_power_callback callback) {
    Subscriptions subscriptions = subscriptionsOf(signal);
    return find(subscriptions, callback) != subscriptions.end();
}

// Stores the value unless the request fails.
int set(int& place, int value, int result) {
    if (result >= 0) {
        place = value;
    }
    return result;
}

} // namespace

void setPowerSubscribeResult(PowerSignal signal, int result) {
    locked([=](State::Content& content) { content.power.signals[signal].subscribeResult = result; });
}

void setPowerUnsubscribeResult(PowerSignal signal, int result) {
    locked([=](State::Content& content) { content.power.signals[signal].unsubscribeResult = result; });
}

bool isPowerSubscribed(PowerSignal signal) {
    return !subscriptionsOf(signal).empty();
}

int announcePower(PowerSignal signal, int number) {
    int result = 0;
    for (const Power::Subscription& subscription : subscriptionsOf(signal)) {
        if (isSubscribed(signal, subscription.callback)) {
            result = subscription.callback(number, subscription.userData);
        }
    }
    return result;
}

void setPowerState(int state) {
    locked([state](State::Content& content) { content.power.state = state; });
}

void setPowerSetStateResult(int result) {
    locked([result](State::Content& content) { content.power.setStateResult = result; });
}

void setWakeUpReason(int reason) {
    locked([reason](State::Content& content) { content.power.wakeUpReason = reason; });
}

void setWakeUpReasonResult(int result) {
    locked([result](State::Content& content) { content.power.setWakeUpReasonResult = result; });
}

void setRebootResult(int result) {
    locked([result](State::Content& content) { content.power.rebootResult = result; });
}

void setPoweroffResult(int result) {
    locked([result](State::Content& content) { content.power.poweroffResult = result; });
}

} // namespace FakeKovan

using FakeKovan::locked;
using FakeKovan::PowerSignal;
using FakeKovan::State;

int device_power_get_state() {
    return locked([](State::Content& content) { return content.power.state; });
}

int device_power_set_state(int state, int flag) {
    return locked([=](State::Content& content) {
        content.journal.push_back("power set_state " + std::to_string(state) + " " + std::to_string(flag));
        return FakeKovan::set(content.power.state, state, content.power.setStateResult);
    });
}

int device_power_get_wakeup_reason() {
    return locked([](State::Content& content) { return content.power.wakeUpReason; });
}

int device_power_set_wakeup_reason(int reason) {
    return locked([reason](State::Content& content) {
        content.journal.push_back("power set_wakeup_reason " + std::to_string(reason));
        return FakeKovan::set(content.power.wakeUpReason, reason, content.power.setWakeUpReasonResult);
    });
}

int device_power_request_reboot(int reason) {
    return locked([reason](State::Content& content) {
        content.journal.push_back("power request_reboot " + std::to_string(reason));
        return content.power.rebootResult;
    });
}

int device_power_request_poweroff(int reason) {
    return locked([reason](State::Content& content) {
        content.journal.push_back("power request_poweroff " + std::to_string(reason));
        return content.power.poweroffResult;
    });
}

int device_power_subscribe_state_changed(device_power_callback callback, void* userData) {
    return FakeKovan::subscribe(PowerSignal::STATE_CHANGED, callback, userData);
}

int device_power_unsubscribe_state_changed(device_power_callback callback) {
    return FakeKovan::unsubscribe(PowerSignal::STATE_CHANGED, callback);
}

int device_power_subscribe_poweroff(device_power_callback callback, void* userData) {
    return FakeKovan::subscribe(PowerSignal::POWER_OFF, callback, userData);
}

int device_power_unsubscribe_poweroff(device_power_callback callback) {
    return FakeKovan::unsubscribe(PowerSignal::POWER_OFF, callback);
}

int device_power_subscribe_post_wakeup(device_power_callback callback, void* userData) {
    return FakeKovan::subscribe(PowerSignal::POST_WAKEUP, callback, userData);
}

int device_power_unsubscribe_post_wakeup(device_power_callback callback) {
    return FakeKovan::unsubscribe(PowerSignal::POST_WAKEUP, callback);
}
