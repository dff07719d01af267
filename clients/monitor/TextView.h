#pragma once

#include <ostream>

#include "monitor/BusEvent.h"

namespace monitor {

// Writes a line for each event, for people. Times are seconds since the first event. With `colours`, escape sequences
// of a terminal tell failures and refusals apart.
class TextView : public EventSink {
public:
    TextView(std::ostream& out, bool colours) : m_out(out), m_colours(colours) {}

    void onCall(const CallEvent& call) override;
    void onAnswer(const CallEvent& call, const AnswerEvent& answer) override;
    void onOwner(const OwnerEvent& change) override;
    void onNote(const NoteEvent& note) override;
    void onEnd(std::size_t) override {}

private:
    enum class Colour { PLAIN, FAINT, CALL, REFUSAL, FAILURE };

    void writeLine(std::int64_t time, const std::string& side, Colour colour, const std::string& head,
                   const std::string& rest);

    std::ostream& m_out;
    bool m_colours;
    std::optional<std::int64_t> m_begin;
};

// "service" or "core".
const char* sideName(Side side);

// ":1.7 daxctl[4711] "updater"", as far as it is known.
std::string describeCaller(const Caller& caller);

} // namespace monitor
