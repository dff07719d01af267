#include "monitor/TextView.h"

#include <algorithm>
#include <cstdio>

#include "clients_common/Printable.h"
#include "monitor/LineBreaks.h"
#include "monitor/Values.h"

namespace monitor {

namespace {

using clients_common::printable;

const std::size_t SIDE_WIDTH = 8;   // of the column that says whose method it is
const std::size_t NUMBER_WIDTH = 5; // of a call's number; higher ones are wider
const std::size_t INDENT = 22;      // of the second line of what does not fit into one: behind time and side
const std::size_t SHOWN = 80;       // characters of one text or byte array

std::string secondsColumn(std::int64_t microseconds) {
    char text[40];
    std::snprintf(text, sizeof text, "%13.6f", static_cast<double>(microseconds) / 1e6);
    return text;
}

std::string millisecondsText(std::int64_t microseconds) {
    char text[40];
    std::snprintf(text, sizeof text, "%.3f ms", static_cast<double>(microseconds) / 1e3);
    return text;
}

std::string breakageText(const DecodedArchive& archive) {
    const auto& breakage = *archive.breakage;
    return "BROKEN at byte " + std::to_string(breakage.offset) +
           (breakage.field.empty() ? "" : " (" + breakage.field + ")") + ": " + breakage.reason;
}

std::string padded(const std::string& text, std::size_t width) {
    return text + std::string(width - std::min(text.size(), width), ' ');
}

std::string callNumber(const CallEvent& call) {
    return padded("#" + std::to_string(call.number), NUMBER_WIDTH);
}

std::string joined(std::initializer_list<std::string> parts) {
    std::string text;
    for (const std::string& part : parts) {
        text += (text.empty() || part.empty() ? "" : "  ") + part;
    }
    return text;
}

std::string argumentsText(const CallEvent& call) {
    if (!call.isKnown) {
        return "(no method of the update stack)";
    }
    return joined({valuesAsText(call.arguments.values, SHOWN),
                   call.arguments.breakage ? breakageText(call.arguments) : std::string(),
                   call.unreadBytes > 0 ? "(more bytes, which nobody reads)" : std::string()});
}

// What the call belongs to. A method that brings the id itself shows it among its arguments.
std::string belonging(const CallEvent& call) {
    const std::string ids = (call.session.empty() ? "" : "session " + printable(call.session, SHOWN)) +
                            (call.session.empty() || call.transaction.empty() ? "" : ", ") +
                            (call.transaction.empty() ? "" : "transaction " + printable(call.transaction, SHOWN));
    return ids.empty() ? ids : "[" + ids + "]";
}

std::string failureText(const AnswerEvent& answer) {
    return answer.failure + (answer.supportCode.empty() ? "" : " (support code " + answer.supportCode + ")") +
           (answer.text.empty() ? "" : ": " + printable(answer.text, 4 * SHOWN));
}

std::string outcomeText(const AnswerEvent& answer) {
    switch (answer.outcome) {
    case Outcome::REFUSED:
        return "REFUSED";
    case Outcome::FAILED:
        return "FAILED  " + printable(failureText(answer), 6 * SHOWN);
    case Outcome::BROKEN:
        return joined({valuesAsText(answer.result.values, SHOWN), breakageText(answer.result)});
    case Outcome::DONE:
        break;
    }
    const std::string result = valuesAsText(answer.result.values, SHOWN);
    return result.empty() ? "done" : result;
}

} // namespace

const char* sideName(Side side) {
    return side == Side::SERVICE ? "service" : "core";
}

std::string describeCaller(const Caller& caller) {
    std::string text = printable(caller.connection, SHOWN);
    if (caller.process) {
        text += " " + printable(caller.process->name, SHOWN) + "[" + std::to_string(caller.process->pid) + "]";
    }
    return caller.client.empty() ? text : text + " \"" + printable(caller.client, SHOWN) + "\"";
}

void TextView::onCall(const CallEvent& call) {
    const bool isWhole = call.isKnown && !call.arguments.breakage;
    writeLine(call.time, sideName(call.side), isWhole ? Colour::CALL : Colour::FAILURE,
              callNumber(call) + " > " + printable(call.method, SHOWN),
              joined({argumentsText(call), "by " + describeCaller(call.caller), belonging(call)}));
}

void TextView::onAnswer(const CallEvent& call, const AnswerEvent& answer) {
    const Colour colour = answer.outcome == Outcome::DONE      ? Colour::PLAIN
                          : answer.outcome == Outcome::REFUSED ? Colour::REFUSAL
                                                               : Colour::FAILURE;
    writeLine(answer.time, sideName(call.side), colour, callNumber(call) + " < " + printable(call.method, SHOWN),
              joined({outcomeText(answer), "after " + millisecondsText(answer.latency)}));
}

void TextView::onOwner(const OwnerEvent& change) {
    if (change.side) {
        const std::string from = printable(change.from, SHOWN);
        const std::string to = printable(change.to, SHOWN);
        const std::string what = to.empty()     ? "has ended, " + from
                                 : from.empty() ? "has started, " + to
                                                : "has changed hands, " + from + " to " + to;
        writeLine(change.time, sideName(*change.side), change.to.empty() ? Colour::FAILURE : Colour::FAINT,
                  std::string("the ") + sideName(*change.side), what);
        return;
    }
    writeLine(change.time, "", Colour::FAINT, "caller",
              describeCaller(change.caller) + " has left" +
                  (change.session.empty() ? "" : "; session " + printable(change.session, SHOWN) + " ends with it"));
}

void TextView::onNote(const NoteEvent& note) {
    writeLine(note.time, "", Colour::FAILURE, "note", printable(note.text, 6 * SHOWN));
}

void TextView::writeLine(std::int64_t time, const std::string& side, Colour colour, const std::string& head,
                         const std::string& rest) {
    const char* const sequences[] = {"", "\x1b[2m", "\x1b[36m", "\x1b[33m", "\x1b[31m"};
    m_begin = m_begin ? m_begin : time;
    const std::string before = secondsColumn(time - *m_begin) + " " + padded(side, SIDE_WIDTH);
    std::vector<std::string> lines = brokenLines(before + head + "  " + rest, m_width(), INDENT);
    if (m_colours && colour != Colour::PLAIN) {
        // In a terminal that is too narrow for the head, its first line is coloured.
        const std::size_t begin = std::min(lines[0].size(), before.size());
        const std::size_t end = std::min(lines[0].size(), before.size() + head.size());
        lines[0].insert(end, "\x1b[0m");
        lines[0].insert(begin, sequences[static_cast<int>(colour)]);
    }
    for (const std::string& line : lines) {
        m_out << line << "\n";
    }
}

} // namespace monitor
