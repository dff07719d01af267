#include "monitor/JsonView.h"

#include <cstdio>
#include <ctime>

#include <nlohmann/json.hpp>

#include "clients_common/Output.h"
#include "monitor/TextView.h"
#include "monitor/Values.h"

namespace monitor {

namespace {

using Json = nlohmann::ordered_json;

Json orNull(const std::string& text) {
    return text.empty() ? Json() : Json(text);
}

Json asJson(const Caller& caller) {
    return {{"connection", caller.connection},
            {"pid", caller.process ? Json(caller.process->pid) : Json()},
            {"process", caller.process ? orNull(caller.process->name) : Json()},
            {"client", orNull(caller.client)}};
}

Json begin(std::int64_t time, const char* event) {
    return {{"time", isoTime(time)}, {"event", event}};
}

void addCall(Json& object, const CallEvent& call) {
    object["side"] = sideName(call.side);
    object["number"] = call.number;
    object["method"] = call.method;
    object["caller"] = asJson(call.caller);
    object["session"] = orNull(call.session);
    object["transaction"] = orNull(call.transaction);
}

// The values under `name`, and what is wrong with the archive, or left out.
void addArchive(Json& object, const char* name, const DecodedArchive& archive) {
    object[name] = valuesAsJson(archive.values);
    if (archive.breakage) {
        object["breakage"] = {{"offset", archive.breakage->offset},
                              {"field", orNull(archive.breakage->field)},
                              {"reason", archive.breakage->reason}};
    }
    if (const std::size_t omitted = omittedIn(archive.values)) {
        object["omitted"] = omitted;
    }
}

const char* outcomeName(Outcome outcome) {
    switch (outcome) {
    case Outcome::DONE:
        return "done";
    case Outcome::REFUSED:
        return "refused";
    case Outcome::FAILED:
        return "failed";
    case Outcome::BROKEN:
        return "broken";
    }
    return "";
}

const char* changeName(const OwnerEvent& change) {
    return change.to.empty() ? "ended" : change.from.empty() ? "started" : "moved";
}

} // namespace

std::string isoTime(std::int64_t microseconds) {
    const std::int64_t fraction = (microseconds % 1000000 + 1000000) % 1000000; // of a time before 1970, too
    const std::time_t seconds = static_cast<std::time_t>((microseconds - fraction) / 1000000);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[64];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
    std::snprintf(text + length, sizeof text - length, ".%06dZ", static_cast<int>(fraction));
    return text;
}

void JsonView::onCall(const CallEvent& call) {
    Json object = begin(call.time, "call");
    addCall(object, call);
    object["known"] = call.isKnown;
    addArchive(object, "arguments", call.arguments);
    if (call.unreadBytes > 0) {
        object["unreadBytes"] = call.unreadBytes;
    }
    write(object);
}

void JsonView::onAnswer(const CallEvent& call, const AnswerEvent& answer) {
    Json object = begin(answer.time, "answer");
    addCall(object, call);
    object["outcome"] = outcomeName(answer.outcome);
    object["latencyMs"] = static_cast<double>(answer.latency) / 1000;
    addArchive(object, "result", answer.result);
    if (!answer.hasArchive) {
        object["result"] = nullptr;
    }
    if (answer.outcome == Outcome::FAILED) {
        object["failure"] = {{"kind", answer.isBusError ? "bus error" : "exception"},
                             {"name", answer.failure},
                             {"supportCode", orNull(answer.supportCode)},
                             {"text", answer.text}};
    }
    write(object);
}

void JsonView::onOwner(const OwnerEvent& change) {
    Json object = begin(change.time, change.side ? "owner" : "left");
    if (change.side) {
        object["side"] = sideName(*change.side);
        object["name"] = change.name;
        object["change"] = changeName(change);
        object["from"] = orNull(change.from);
        object["to"] = orNull(change.to);
    } else {
        object["caller"] = asJson(change.caller);
        object["session"] = orNull(change.session);
    }
    write(object);
}

void JsonView::onNote(const NoteEvent& note) {
    Json object = begin(note.time, "note");
    object["text"] = note.text;
    write(object);
}

void JsonView::write(const Json& object) {
    m_out << clients_common::jsonText(object) << "\n";
}

} // namespace monitor
