#include <bootclock.h>

#include "support/FakeKovan/State.h"

namespace FakeKovan {

void setBootclockInitResult(int result) {
    locked([result](State::Content& content) { content.bootclockInitResult = result; });
}

int bootclockInits() {
    return locked([](State::Content& content) { return content.bootclockInits; });
}

int bootclockFinis() {
    return locked([](State::Content& content) { return content.bootclockFinis; });
}

void setLocalTime(std::uint64_t seconds) {
    locked([seconds](State::Content& content) { content.localTime = seconds; });
}

void setSecondsAheadOfUTC(std::int64_t seconds) {
    locked([seconds](State::Content& content) { content.secondsAheadOfUTC = seconds; });
}

} // namespace FakeKovan

using FakeKovan::locked;
using FakeKovan::State;

int bootclock_init() {
    return locked([](State::Content& content) {
        content.journal.push_back("bootclock init");
        ++content.bootclockInits;
        return content.bootclockInitResult;
    });
}

int bootclock_fini() {
    return locked([](State::Content& content) {
        content.journal.push_back("bootclock fini");
        ++content.bootclockFinis;
        return 0;
    });
}

uint64_t BC_GetCurrentTime() {
    return locked([](State::Content& content) { return content.localTime; });
}

uint64_t BC_ConvertToUTCTime(uint64_t localTime) {
    return locked([localTime](State::Content& content) {
        return static_cast<uint64_t>(static_cast<int64_t>(localTime) - content.secondsAheadOfUTC);
    });
}
