#include <DAXProductionConfig.h>
#include <hangguard.h>
#include <proc_stat.h>

#include "support/FakeKovan/State.h"

namespace FakeKovan {

void setHangguardRegisterResult(int result) {
    locked([result](State::Content& content) { content.hangguardRegisterResult = result; });
}

void setHangguardNotifyResult(int result) {
    locked([result](State::Content& content) { content.hangguardNotifyResult = result; });
}

std::vector<int> hangguardRegistrations() {
    return locked([](State::Content& content) { return content.hangguardRegistrations; });
}

int hangguardNotifications() {
    return locked([](State::Content& content) { return content.hangguardNotifications; });
}

void setVipResult(int result) {
    locked([result](State::Content& content) { content.vipResult = result; });
}

int vipCalls() {
    return locked([](State::Content& content) { return content.vipCalls; });
}

void setProduction(bool production) {
    locked([production](State::Content& content) { content.production = production; });
}

} // namespace FakeKovan

using FakeKovan::locked;
using FakeKovan::State;

int hangguard_register_watchdog_service(int seconds) {
    return locked([seconds](State::Content& content) {
        content.journal.push_back("hangguard register " + std::to_string(seconds));
        content.hangguardRegistrations.push_back(seconds);
        return content.hangguardRegisterResult;
    });
}

int hangguard_watchdog_notify() {
    return locked([](State::Content& content) {
        content.journal.push_back("hangguard notify");
        ++content.hangguardNotifications;
        return content.hangguardNotifyResult;
    });
}

int proc_stat_set_vip_process() {
    return locked([](State::Content& content) {
        content.journal.push_back("vip");
        ++content.vipCalls;
        return content.vipResult;
    });
}

namespace DAX::Common::Debug {

bool isProduction() {
    return locked([](State::Content& content) { return content.production; });
}

} // namespace DAX::Common::Debug
