#pragma once

#include <ostream>

#include <nlohmann/json_fwd.hpp>

#include "monitor/BusEvent.h"

namespace monitor {

// Writes one JSON object a line for each event. docs/monitor.schema.json describes them.
class JsonView : public EventSink {
public:
    explicit JsonView(std::ostream& out) : m_out(out) {}

    void onCall(const CallEvent& call) override;
    void onAnswer(const CallEvent& call, const AnswerEvent& answer) override;
    void onOwner(const OwnerEvent& change) override;
    void onNote(const NoteEvent& note) override;

    // Writes any object as one line.
    void write(const nlohmann::ordered_json& object);

private:
    std::ostream& m_out;
};

// "2026-11-22T05:58:51.123456Z".
std::string isoTime(std::int64_t microseconds);

} // namespace monitor
