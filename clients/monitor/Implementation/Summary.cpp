#include "monitor/Summary.h"

#include <algorithm>
#include <cstdio>

#include <nlohmann/json.hpp>

#include "monitor/TextView.h"

namespace monitor {

namespace {

const char* const UNKNOWN = "(unknown)";

double inMilliseconds(std::int64_t microseconds) {
    return static_cast<double>(microseconds) / 1000;
}

} // namespace

Summary::Method& Summary::methodOf(const CallEvent& call) {
    return m_methods[{call.side, call.isKnown ? call.method : UNKNOWN}];
}

void Summary::onCall(const CallEvent& call) {
    Method& method = methodOf(call);
    ++method.calls;
    method.expected += call.expectsAnswer ? 1 : 0;
}

std::uint64_t Summary::unanswered() const {
    std::uint64_t sum = 0;
    for (const auto& entry : m_methods) {
        sum += entry.second.expected - entry.second.latencies.count();
    }
    return sum;
}

void Summary::onAnswer(const CallEvent& call, const AnswerEvent& answer) {
    Method& method = methodOf(call);
    method.latencies.add(answer.latency);
    method.refused += answer.outcome == Outcome::REFUSED ? 1 : 0;
    method.failed += answer.outcome == Outcome::FAILED || answer.outcome == Outcome::BROKEN ? 1 : 0;
}

void Summary::print(std::ostream& out) const {
    char line[200]; // of which 80 letters are in use, as many as a terminal has
    std::snprintf(line, sizeof line, "%-8s%-30s %6s %7s %6s %9s %9s\n", "", "method", "calls", "refused", "failed",
                  "median ms", "worst ms");
    out << line;
    std::uint64_t calls = 0;
    for (const auto& [key, method] : m_methods) {
        calls += method.calls;
        std::snprintf(line, sizeof line, "%-8s%-30s %6llu %7llu %6llu %9.3f %9.3f\n", sideName(key.first),
                      key.second.c_str(), static_cast<unsigned long long>(method.calls),
                      static_cast<unsigned long long>(method.refused), static_cast<unsigned long long>(method.failed),
                      inMilliseconds(method.latencies.median()), inMilliseconds(method.latencies.worst()));
        out << line;
    }
    out << calls << (calls == 1 ? " call" : " calls");
    if (unanswered() > 0) {
        out << ", " << unanswered() << " not answered yet";
    }
    out << std::endl;
}

nlohmann::ordered_json Summary::toJson() const {
    auto methods = nlohmann::ordered_json::array();
    for (const auto& [key, method] : m_methods) {
        methods.push_back({{"side", sideName(key.first)},
                           {"method", key.second},
                           {"calls", method.calls},
                           {"answers", method.latencies.count()},
                           {"refused", method.refused},
                           {"failed", method.failed},
                           {"medianMs", inMilliseconds(method.latencies.median())},
                           {"worstMs", inMilliseconds(method.latencies.worst())}});
    }
    return {{"event", "summary"}, {"methods", methods}, {"unanswered", unanswered()}};
}

} // namespace monitor
