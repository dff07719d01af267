#pragma once

#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "monitor/BusEvent.h"

namespace monitor {

// Draws what was seen as a sequence: a lifeline for each client, one for the service and one for the core, the calls as
// arrows with their results below, refusals and failures in colours of their own, and a bar where a client holds the
// service. Calls that repeat themselves, as progress that is polled, become one arrow. It keeps the first MOST_STEPS
// calls and changes, and tells how many it has left out.
class Diagram : public EventSink {
public:
    enum class Scale {
        COMPRESSED, // each row as high as it needs
        TIME        // longer times are longer ways, as far as the rows leave room for it
    };
    static constexpr std::size_t MOST_STEPS = 4000;

    void onCall(const CallEvent& call) override;
    void onAnswer(const CallEvent& call, const AnswerEvent& answer) override;
    void onOwner(const OwnerEvent& change) override;
    void onNote(const NoteEvent& note) override;

    // Writes an SVG document.
    void write(std::ostream& out, Scale scale) const;

    // How one step looks. The drawing itself is in DiagramDrawing.
    enum class Look { PLAIN, REFUSED, FAILED };
    // What it does to the session, of which there is one at most.
    enum class Session { SAME, BEGINS, ENDS };

    // A call, or a change.
    struct Step {
        std::int64_t time = 0;
        std::uint64_t call = 0; // its number; 0 for a change
        std::optional<Side> side;
        std::string connection; // of the caller
        std::string label;
        std::string result;
        std::string explanation; // of a failure
        Look look = Look::PLAIN;
        Session session = Session::SAME;
        bool wantsAnswer = true;
        bool isAnswered = false;
        bool isEnd = false; // of a lifeline
    };

private:
    bool hasRoom();

    std::vector<Step> m_steps;
    std::map<std::uint64_t, std::size_t> m_open; // calls without an answer, by number
    std::map<std::string, Caller> m_callers;     // of the service, by connection; what was known last
    std::size_t m_leftOut = 0;
};

} // namespace monitor
