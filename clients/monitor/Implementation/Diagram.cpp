#include "monitor/Diagram.h"

#include <cstdio>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ServiceMethods.h"
#include "clients_common/Printable.h"
#include "monitor/Implementation/DiagramDrawing.h"
#include "monitor/TextView.h"
#include "monitor/Values.h"

namespace monitor {

namespace {

namespace ServiceMethods = DAX::DAXIPC::DBUSLowLevel::ServiceMethods;
using clients_common::printable;
using DAX::DAXIPC::DBUSLowLevel::DecodedValue;
using DAX::DAXIPC::DBUSLowLevel::TypeDescription;

const std::size_t VALUE_LETTERS = 24; // of one value
const std::size_t EXPLANATION_LETTERS = 200;

bool isOf(const DecodedValue& value, TypeDescription::Form form) {
    return value.type != nullptr && value.type->form == form;
}

// What says little in a picture: what is empty, bytes, and the fraction that refines a percentage.
bool isDetail(const DecodedValue& value) {
    return isOf(value, TypeDescription::Form::BYTES) ||
           (isOf(value, TypeDescription::Form::OPTIONAL) &&
            (value.children.empty() || isOf(value.children[0], TypeDescription::Form::FRACTION)));
}

// A value with as few words as possible: names of fields stand with plain numbers only, and not where a number speaks
// for itself.
std::string shortValue(const DecodedValue& value) {
    if (value.name == "progressPercent") {
        return valueAsText(value, VALUE_LETTERS) + " %";
    }
    if (isOf(value, TypeDescription::Form::NUMBER) && value.type->names.empty()) {
        return value.name + " " + valueAsText(value, VALUE_LETTERS);
    }
    if (value.children.empty() || isOf(value, TypeDescription::Form::LIST)) {
        return valueAsText(value, VALUE_LETTERS);
    }
    std::string text;
    for (const DecodedValue& child : value.children) {
        if (!isDetail(child)) {
            text += (text.empty() ? "" : ", ") + shortValue(child);
        }
    }
    return text;
}

bool isService(const CallEvent& call, const char* method) {
    return call.side == Side::SERVICE && call.method == method;
}

// What the result says, in a few words.
std::string resultOf(const CallEvent& call, const AnswerEvent& answer) {
    switch (answer.outcome) {
    case Outcome::REFUSED:
        return "refused";
    case Outcome::FAILED:
        return printable(answer.failure.substr(answer.isBusError ? answer.failure.rfind('.') + 1 : 0),
                         EXPLANATION_LETTERS);
    case Outcome::BROKEN:
        return "cannot be read";
    case Outcome::DONE:
        break;
    }
    const auto& values = answer.result.values;
    if (isService(call, ServiceMethods::getServiceOwner.name) && values.size() > 2) {
        const bool* const isOwned = std::get_if<bool>(&values[0].value);
        return isOwned != nullptr && *isOwned ? shortValue(values[2]) + ", " + shortValue(values[1]) : "nobody";
    }
    std::string text;
    for (const DecodedValue& value : values) {
        text += (text.empty() ? "" : ", ") + (value.name == "busName" ? "granted" : shortValue(value));
    }
    return text;
}

std::string explanationOf(const AnswerEvent& answer) {
    return answer.outcome == Outcome::FAILED   ? printable(answer.text, EXPLANATION_LETTERS)
           : answer.outcome == Outcome::BROKEN ? printable(answer.result.breakage->reason, EXPLANATION_LETTERS)
                                               : std::string();
}

Diagram::Session sessionAfter(const CallEvent& call, const AnswerEvent& answer) {
    if (answer.outcome == Outcome::DONE && isService(call, ServiceMethods::getService.name)) {
        return Diagram::Session::BEGINS;
    }
    return answer.outcome == Outcome::DONE && isService(call, ServiceMethods::invalidate.name) ? Diagram::Session::ENDS
                                                                                               : Diagram::Session::SAME;
}

std::string labelOf(const CallEvent& call) {
    std::string label = printable(call.method, 40);
    if (isService(call, ServiceMethods::getService.name) && !call.arguments.values.empty()) {
        label += ", priority " + valueAsText(call.arguments.values[0], VALUE_LETTERS);
    } else if (isService(call, ServiceMethods::helloMessage.name) && !call.session.empty()) {
        label += call.transaction.empty() ? " of the session" : " of the transaction";
    }
    return label;
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
    step.label = labelOf(call);
    step.wantsAnswer = call.expectsAnswer;
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
    const std::string result = resultOf(call, answer);
    step.result = (result.empty() ? "" : result + " · ") + latencyText(answer.latency);
    step.explanation = explanationOf(answer);
    step.look = lookOf(answer.outcome);
    step.session = sessionAfter(call, answer);
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
    const bool endsSession = change.side ? change.side == Side::SERVICE : !change.session.empty();
    step.session = endsSession ? Session::ENDS : Session::SAME;
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
