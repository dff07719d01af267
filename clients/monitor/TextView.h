#pragma once

#include <functional>
#include <ostream>

#include "monitor/BusEvent.h"

namespace monitor {

// Writes a line for each event, for people. Times are seconds since the first event. With `colours`, escape sequences
// of a terminal tell failures and refusals apart.
class TextView : public EventSink {
public:
    // How many letters fit into a line now; 0 when it may be as long as it is. A longer one goes on in the next,
    // indented.
    using Width = std::function<std::size_t()>;

    TextView(std::ostream& out, bool colours, Width width)
        : m_out(out), m_colours(colours), m_width(std::move(width)) {}

    void onCall(const CallEvent& call) override;
    void onAnswer(const CallEvent& call, const AnswerEvent& answer) override;
    void onOwner(const OwnerEvent& change) override;
    void onNote(const NoteEvent& note) override;

private:
    enum class Colour { PLAIN, FAINT, CALL, REFUSAL, FAILURE };

    void writeLine(std::int64_t time, const std::string& side, Colour colour, const std::string& head,
                   const std::string& rest);

    std::ostream& m_out;
    bool m_colours;
    Width m_width;
    std::optional<std::int64_t> m_begin;
};

// "service" or "core".
const char* sideName(Side side);

// ":1.7 daxctl[4711] "updater"", as far as it is known.
std::string describeCaller(const Caller& caller);

} // namespace monitor
