#include <utility>

#include <MetricLogger.h>

#include "support/FakeEvents.h"
#include "support/FakeKovan/State.h"

namespace FakeKovan {
namespace {

std::function<void()> atEvent;

} // namespace

void onEvent(std::function<void()> action) {
    atEvent = std::move(action);
}

std::vector<Event> events() {
    return locked([](State::Content& content) { return content.events; });
}

void setEventResult(int result) {
    locked([result](State::Content& content) { content.eventResult = result; });
}

} // namespace FakeKovan

namespace MetricLogFramework {

CLogger* CLogger::GetInstance() {
    static CLogger logger;
    return &logger;
}

int CLogger::AddEventLogSync(const std::string& application, const std::string& name, const std::string& code,
                             const std::string& description) {
    if (FakeKovan::atEvent) {
        FakeKovan::atEvent();
    }
    return FakeKovan::locked([&](FakeKovan::State::Content& content) {
        content.journal.push_back("event " + name + " " + code);
        content.events.push_back({application, name, code, description});
        return content.eventResult;
    });
}

} // namespace MetricLogFramework
