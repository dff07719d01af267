#pragma once

#include <map>
#include <ostream>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "monitor/BusEvent.h"
#include "monitor/Latencies.h"

namespace monitor {

// Counts the calls of each method. Methods that do not exist are counted as one.
class Summary : public EventSink {
public:
    void onCall(const CallEvent& call) override;
    void onAnswer(const CallEvent& call, const AnswerEvent& answer) override;
    void onOwner(const OwnerEvent&) override {}
    void onNote(const NoteEvent&) override {}

    // A table for people.
    void print(std::ostream& out) const;

    // The last line of --json.
    nlohmann::ordered_json toJson() const;

private:
    struct Method {
        std::uint64_t calls = 0;
        std::uint64_t expected = 0; // answers
        std::uint64_t refused = 0;
        std::uint64_t failed = 0; // exceptions, errors of the bus, archives that cannot be read
        Latencies latencies;
    };

    Method& methodOf(const CallEvent& call);
    // Calls that want an answer and have none so far.
    std::uint64_t unanswered() const;

    std::map<std::pair<Side, std::string>, Method> m_methods;
};

} // namespace monitor
