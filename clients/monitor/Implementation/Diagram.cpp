#include "monitor/Diagram.h"

#include <cstdio>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ServiceMethods.h"
#include "monitor/Implementation/DiagramDrawing.h"
#include "monitor/TextView.h"
#include "monitor/Values.h"

namespace monitor {

namespace {

using DAX::DAXIPC::DBUSLowLevel::DecodedValue;

const std::size_t VALUE_LETTERS = 24; // characters of one value

// The values of a record without the names of its fields, which would not fit.
std::string shortValue(const DecodedValue& value) {
    using Form = DAX::DAXIPC::DBUSLowLevel::TypeDescription::Form;
    if (value.type == nullptr || value.children.empty() ||
        (value.type->form != Form::RECORD && value.type->form != Form::OPTIONAL)) {
        return valueAsText(value, VALUE_LETTERS);
    }
    std::string text;
    for (const DecodedValue& child : value.children) {
        const bool isEmpty = child.type != nullptr && child.type->form == Form::OPTIONAL && child.children.empty();
        const bool isBytes = child.type != nullptr && child.type->form == Form::BYTES;
        if (!isEmpty && !isBytes) {
            text += (text.empty() ? "" : ", ") + shortValue(child);
        }
    }
    return text;
}

// What the result says, in a few words.
std::string resultOf(const AnswerEvent& answer) {
    switch (answer.outcome) {
    case Outcome::REFUSED:
        return "refused";
    case Outcome::FAILED:
        return answer.failure.substr(answer.isBusError ? answer.failure.rfind('.') + 1 : 0) +
               (answer.text.empty() ? "" : ": " + printable(answer.text, 60));
    case Outcome::BROKEN:
        return "cannot be read: " + answer.result.breakage->reason;
    case Outcome::DONE:
        break;
    }
    std::string text;
    for (const DecodedValue& value : answer.result.values) {
        text += (text.empty() ? "" : ", ") + (value.name == "busName" ? "granted" : shortValue(value));
    }
    return text;
}

std::string latencyText(std::int64_t microseconds) {
    if (microseconds < 1000) {
        return std::to_string(microseconds) + " µs";
    }
    char text[40];
    const double value = static_cast<double>(microseconds) / 1000;
    std::snprintf(text, sizeof text, value < 10 ? "%.1f ms" : "%.0f ms", value);
    return text;
}

Diagram::Look lookOf(Outcome outcome) {
    return outcome == Outcome::DONE      ? Diagram::Look::PLAIN
           : outcome == Outcome::REFUSED ? Diagram::Look::REFUSED
                                         : Diagram::Look::FAILED;
}

} // namespace

bool Diagram::hasRoom() {
    m_leftOut += m_steps.size() < MOST_STEPS ? 0 : 1;
    return m_steps.size() < MOST_STEPS;
}

void Diagram::onCall(const CallEvent& call) {
    if (!hasRoom()) {
        return;
    }
    if (call.side == Side::SERVICE) {
        Caller& known = m_callers[call.caller.connection];
        const std::string client = call.caller.client.empty() ? known.client : call.caller.client;
        known = call.caller;
        known.client = client;
    }
    Step step;
    step.time = call.time;
    step.call = call.number;
    step.side = call.side;
    step.connection = call.caller.connection;
    step.label = printable(call.method, 40);
    if (call.side == Side::SERVICE && call.method == DAX::DAXIPC::DBUSLowLevel::ServiceMethods::getService.name &&
        !call.arguments.values.empty()) {
        step.label += ", priority " + valueAsText(call.arguments.values[0], VALUE_LETTERS);
    }
    m_open[call.number] = m_steps.size();
    m_steps.push_back(std::move(step));
}

void Diagram::onAnswer(const CallEvent& call, const AnswerEvent& answer) {
    const auto open = m_open.find(call.number);
    if (open == m_open.end()) {
        return;
    }
    Step& step = m_steps[open->second];
    m_open.erase(open);
    const std::string result = resultOf(answer);
    step.result = (result.empty() ? "" : result + " · ") + latencyText(answer.latency);
    step.look = lookOf(answer.outcome);
    step.isAnswered = true;
}

void Diagram::onOwner(const OwnerEvent& change) {
    if (!change.side && m_callers.count(change.name) == 0) {
        return;
    }
    if (!hasRoom()) {
        return;
    }
    Step step;
    step.time = change.time;
    step.side = change.side;
    step.connection = change.side ? "" : change.name;
    step.isEnd = change.to.empty();
    if (change.side) {
        step.label = std::string("the ") + sideName(*change.side) + (step.isEnd ? " ends" : " starts");
        step.look = step.isEnd ? Look::FAILED : Look::PLAIN;
    } else {
        step.label = change.session.empty() ? "leaves" : "leaves, its session ends";
    }
    m_steps.push_back(std::move(step));
}

void Diagram::onNote(const NoteEvent& note) {
    if (hasRoom()) {
        Step step;
        step.time = note.time;
        step.label = printable(note.text, 100);
        step.look = Look::FAILED;
        m_steps.push_back(std::move(step));
    }
}

void Diagram::write(std::ostream& out, Scale scale) const {
    DiagramDrawing(m_steps, m_callers, scale == Scale::TIME).write(out, m_leftOut);
}

} // namespace monitor
