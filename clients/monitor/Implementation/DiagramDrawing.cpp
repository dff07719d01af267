#include "monitor/Implementation/DiagramDrawing.h"

#include <algorithm>
#include <cstdio>
#include <set>

#include "clients_common/Printable.h"
#include "monitor/LineBreaks.h"
#include "monitor/Values.h"

namespace monitor {

namespace {

using clients_common::printable;

// In pixels.
const double TIMES = 136;      // the column of the times
const double CLIENT = 150;     // from one client's lifeline to the next
const double TO_SERVICE = 330; // from the last client's to the service's, and from there to the core's
const double MARGIN = 130;     // right of the core's
const double HEAD = 84;        // above the first row
const double ROW = 46;
const double CHANGE = 36;
const double LINE = 14;          // of an explanation
const double SCALE = 120;        // a second
const double LONGEST_GAP = 1200; // between two rows
const double FOOT = 64;
const std::size_t MOST_CLIENTS = 6;
const std::size_t MOST_LETTERS = 46; // of a label between two lifelines
const std::size_t SMALL_LETTERS = 50;
const std::size_t MOST_LINES = 2; // of an explanation

const char* const STYLE = R"(    text { font: 14px "DejaVu Sans", Verdana, sans-serif; fill: #1f2933 }
    .title { font-weight: bold }
    .small { font-size: 11px; fill: #52606d }
    .code { font: 12px "DejaVu Sans Mono", Menlo, Consolas, monospace }
    .middle { text-anchor: middle }
    .end { text-anchor: end }
    .paper { fill: #ffffff }
    .box { fill: #f5f7fa; stroke: #7b8794; stroke-width: 1.25 }
    .daemon { fill: #e6f0fb; stroke: #2f6fb2; stroke-width: 1.5 }
    .life { stroke: #9aa5b1; stroke-dasharray: 2 4 }
    .held { fill: #bcd7f2; stroke: #2f6fb2 }
    .line { fill: none; stroke: #3e4c59; stroke-width: 1.5; marker-end: url(#tip) }
    .line.refused { stroke: #b7791f; marker-end: url(#tip-refused) }
    .line.failed { stroke: #c02a2a; marker-end: url(#tip-failed) }
    .line.waiting { stroke-dasharray: 5 4 }
    .cross { fill: none; stroke: #c02a2a; stroke-width: 2.5 }
    .cross.plain { stroke: #7b8794 }
    .tip { fill: #3e4c59 }
    text.refused { fill: #8a5a10 }
    text.failed { fill: #b02020 }
    .bold { font-weight: bold }
    .tip.refused { fill: #b7791f }
    .tip.failed { fill: #c02a2a }
    @media (prefers-color-scheme: dark) {
      text { fill: #e4e7eb }
      .small { fill: #b8c2cc }
      .paper { fill: #14181d }
      .box { fill: #232a32; stroke: #8d99a6 }
      .daemon { fill: #172a40; stroke: #6aa9e9 }
      .life { stroke: #66727f }
      .held { fill: #28486b; stroke: #6aa9e9 }
      .line { stroke: #c3ccd5 }
      .tip { fill: #c3ccd5 }
      text.refused { fill: #e0b15a }
      text.failed { fill: #ff8a80 }
    }
)";

std::string escaped(const std::string& text) {
    std::string result;
    for (const char letter : text) {
        switch (letter) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        default:
            result += letter;
        }
    }
    return result;
}

std::string shortened(const std::string& text, std::size_t most) {
    if (text.size() <= most) {
        return text;
    }
    std::size_t end = most - 3;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80) {
        --end; // not in the middle of a letter
    }
    return text.substr(0, end) + "...";
}

std::vector<std::string> explanationLines(const Diagram::Step& step) {
    if (step.explanation.empty()) {
        return {};
    }
    std::vector<std::string> lines = brokenLines(step.explanation, SMALL_LETTERS, 0);
    if (lines.size() > MOST_LINES) {
        lines.resize(MOST_LINES);
        const std::string more = " ...";
        lines.back() = brokenLines(lines.back(), SMALL_LETTERS - more.size(), 0).front() + more;
    }
    return lines;
}

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", value);
    std::string result = text;
    return result.size() > 2 && result.compare(result.size() - 2, 2, ".0") == 0 ? result.substr(0, result.size() - 2)
                                                                                : result;
}

void writeText(std::ostream& out, const std::string& classes, double x, double y, const std::string& text) {
    out << "  <text class=\"" << classes << "\" x=\"" << number(x) << "\" y=\"" << number(y) << "\">" << escaped(text)
        << "</text>\n";
}

const char* className(Diagram::Look look) {
    switch (look) {
    case Diagram::Look::REFUSED:
        return " refused";
    case Diagram::Look::FAILED:
        return " failed";
    case Diagram::Look::PLAIN:
        break;
    }
    return "";
}

std::string seconds(std::int64_t microseconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3f", static_cast<double>(microseconds) / 1e6);
    return text;
}

bool isCallOf(const Diagram::Step& step, Side side) {
    return step.call != 0 && step.side == side;
}

bool isClientLeaving(const Diagram::Step& step) {
    return step.call == 0 && step.isEnd && !step.side;
}

// Connections that are one client to a reader have the same: those of a process, or of the name that a client has
// given.
std::string identityOf(const Caller& caller) {
    if (caller.process) {
        return "process " + std::to_string(caller.process->pid);
    }
    return caller.client.empty() ? "connection " + caller.connection : "client " + caller.client;
}

std::string describeProcess(const Caller& caller) {
    if (!caller.process) {
        return caller.client.empty() ? "" : "client";
    }
    return (caller.process->name.empty() ? "process" : printable(caller.process->name, 16)) + " " +
           std::to_string(caller.process->pid);
}

} // namespace

DiagramDrawing::DiagramDrawing(const std::vector<Step>& steps, const std::map<std::string, Caller>& callers,
                               bool toScale) {
    assignLifelines(steps, callers);
    fold(unitsOf(withoutRepeatedLeaving(steps)));
    place(toScale);
}

// From left to right as they come.
void DiagramDrawing::assignLifelines(const std::vector<Step>& steps, const std::map<std::string, Caller>& callers) {
    std::map<std::string, std::size_t> byIdentity;
    for (const Step& step : steps) {
        const auto caller = callers.find(step.connection);
        if (caller != callers.end() && m_clientOf.count(step.connection) == 0) {
            assignLifeline(caller->second, byIdentity);
        }
    }
    if (m_clients.empty()) {
        m_clients.emplace_back("client");
        m_processes.emplace_back();
    }
}

void DiagramDrawing::assignLifeline(const Caller& caller, std::map<std::string, std::size_t>& byIdentity) {
    const auto [found, isNew] = byIdentity.emplace(identityOf(caller), m_clients.size());
    if (isNew && m_clients.size() == MOST_CLIENTS) {
        found->second = MOST_CLIENTS - 1;
        m_clients.back() = "others";
        m_processes.back().clear();
    } else if (isNew) {
        m_clients.push_back(caller.connection);
        m_processes.push_back(describeProcess(caller));
    }
    m_clientOf[caller.connection] = found->second;
    if (!caller.client.empty() && m_clients[found->second] != "others") {
        m_clients[found->second] = printable(caller.client, 16);
    }
}

// A client has several connections, but it leaves once: with the one that ends its session, or with the last that does
// anything at all.
std::vector<const DiagramDrawing::Step*> DiagramDrawing::withoutRepeatedLeaving(const std::vector<Step>& steps) const {
    std::map<std::size_t, const Step*> last; // of each client
    for (const Step& step : steps) {
        if (isClientLeaving(step) || isCallOf(step, Side::SERVICE)) {
            last[clientOf(step)] = &step;
        }
    }
    std::vector<const Step*> kept;
    std::set<std::size_t> gone;
    for (const Step& step : steps) {
        const std::size_t client = clientOf(step);
        const bool isPlainLeaving = isClientLeaving(step) && step.session == Diagram::Session::SAME;
        if (isPlainLeaving && (last[client] != &step || gone.count(client) != 0)) {
            continue;
        }
        if (isClientLeaving(step)) {
            gone.insert(client);
        } else if (isCallOf(step, Side::SERVICE)) {
            gone.erase(client);
        }
        kept.push_back(&step);
    }
    return kept;
}

std::vector<DiagramDrawing::Unit> DiagramDrawing::unitsOf(const std::vector<const Step*>& steps) const {
    std::vector<Unit> units;
    const std::int64_t begin = steps.empty() ? 0 : steps.front()->time;
    const Step* previous = nullptr;
    for (const Step* const current : steps) {
        const Step& step = *current;
        if (units.empty() || !isCallOf(step, Side::CORE)) {
            units.emplace_back();
        }
        Unit& unit = units.back();
        const bool isBeside = isCallOf(step, Side::CORE) && previous != nullptr && isCallOf(*previous, Side::SERVICE);
        if (!isBeside) {
            unit.rows.push_back({{}, 1, step.time - begin, step.time - begin, 0, 0});
        }
        Row& row = unit.rows.back();
        row.steps.push_back(&step);
        row.lines = std::max(row.lines, explanationLines(step).size());
        const bool isPlain = step.call != 0 && step.look == Diagram::Look::PLAIN && step.isAnswered;
        const bool isFirst = unit.rows.size() == 1 && unit.rows[0].steps.size() == 1;
        if (!isPlain) {
            unit.signature.clear();
        } else if (isFirst || !unit.signature.empty()) {
            const auto client = m_clientOf.find(step.connection);
            unit.signature +=
                step.label + " " + (client == m_clientOf.end() ? std::string() : std::to_string(client->second)) + "\n";
        }
        previous = &step;
    }
    return units;
}

void DiagramDrawing::fold(std::vector<Unit> units) {
    std::size_t next = 0;
    while (next < units.size()) {
        std::size_t last = next;
        while (!units[next].signature.empty() && last + 1 < units.size() &&
               units[last + 1].signature == units[next].signature) {
            ++last;
        }
        // The results of the last one are those that matter.
        for (std::size_t i = 0; i < units[last].rows.size(); ++i) {
            Row row = units[last].rows[i];
            row.begin = units[next].rows[i].begin;
            row.repetitions = last - next + 1;
            m_rows.push_back(row);
        }
        next = last + 1;
    }
}

void DiagramDrawing::place(bool toScale) {
    double y = HEAD;
    std::int64_t previous = 0;
    double linesAbove = 0;
    for (Row& row : m_rows) {
        const double least = (row.steps.front()->call != 0 ? ROW : CHANGE) + linesAbove;
        linesAbove = LINE * static_cast<double>(row.lines);
        const double scaled = static_cast<double>(row.begin - previous) / 1e6 * SCALE;
        y += toScale ? std::max(least, std::min(scaled, LONGEST_GAP)) : least;
        row.y = y;
        previous = row.begin;
    }
}

std::size_t DiagramDrawing::clientOf(const Step& step) const {
    const auto client = m_clientOf.find(step.connection);
    return client == m_clientOf.end() ? 0 : client->second;
}

double DiagramDrawing::lifeline(const Step& step) const {
    return TIMES + CLIENT / 2 + CLIENT * static_cast<double>(clientOf(step));
}

double DiagramDrawing::xOfService() const {
    return TIMES + CLIENT / 2 + CLIENT * static_cast<double>(m_clients.size() - 1) + TO_SERVICE;
}

double DiagramDrawing::xOfCore() const {
    return xOfService() + TO_SERVICE;
}

double DiagramDrawing::width() const {
    return xOfCore() + MARGIN;
}

double DiagramDrawing::height() const {
    return (m_rows.empty() ? HEAD : m_rows.back().y + LINE * static_cast<double>(m_rows.back().lines)) + FOOT + 24;
}

void DiagramDrawing::write(std::ostream& out, std::size_t leftOut) const {
    writeHead(out);
    writeLifelines(out);
    writeSessions(out);
    for (const Row& row : m_rows) {
        writeRow(out, row);
    }
    writeText(
        out, "small", 24, height() - 20,
        "Times in seconds. Bar: holds the service. Amber: refused. Red: failed. Dashed: no answer. ×N: N calls, with "
        "the result of the last one." +
            (leftOut > 0 ? " " + std::to_string(leftOut) + " more calls and changes are not drawn." : std::string()));
    out << "</svg>\n";
}

void DiagramDrawing::writeHead(std::ostream& out) const {
    const std::string size = number(width()) + " " + number(height());
    out << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " << size << "\" width=\"" << number(width())
        << "\" height=\"" << number(height()) << "\" role=\"img\" aria-labelledby=\"title\">\n"
        << "  <title id=\"title\">Calls of the update service and the update core</title>\n"
        << "  <style>\n"
        << STYLE << "  </style>\n  <defs>\n";
    for (const char* const kind : {"", "refused", "failed"}) {
        const std::string suffix = *kind != '\0' ? std::string("-") + kind : std::string();
        out << "    <marker id=\"tip" << suffix
            << "\" viewBox=\"0 0 10 10\" refX=\"9\" refY=\"5\" markerWidth=\"8\" markerHeight=\"8\" "
               "orient=\"auto-start-reverse\">\n      <path class=\"tip "
            << kind << "\" d=\"M0 0 10 5 0 10z\"/>\n    </marker>\n";
    }
    out << "  </defs>\n  <rect class=\"paper\" width=\"" << number(width()) << "\" height=\"" << number(height())
        << "\" rx=\"12\"/>\n";
}

void DiagramDrawing::writeLifelines(std::ostream& out) const {
    const auto head = [&](const char* box, double x, double boxWidth, const std::string& title,
                          const std::string& below) {
        out << "  <path class=\"life\" d=\"M" << number(x) << " 76V" << number(height() - FOOT + 18) << "\"/>\n";
        out << "  <rect class=\"" << box << "\" x=\"" << number(x - boxWidth / 2) << "\" y=\"20\" width=\""
            << number(boxWidth) << "\" height=\"56\" rx=\"6\"/>\n";
        writeText(out, "title middle", x, below.empty() ? 53 : 44, title);
        if (!below.empty()) {
            writeText(out, "small middle", x, 64, below);
        }
    };
    for (std::size_t i = 0; i < m_clients.size(); ++i) {
        head("box", TIMES + CLIENT / 2 + CLIENT * static_cast<double>(i), CLIENT - 14, m_clients[i], m_processes[i]);
    }
    head("daemon", xOfService(), 170, "DAXService", "");
    head("box", xOfCore(), 170, "update core", "");
}

void DiagramDrawing::writeSessions(std::ostream& out) const {
    const double width = 10;
    double x = 0;
    double begin = 0;
    bool isHeld = false;
    const auto endAt = [&](double y) {
        if (isHeld) {
            out << "  <rect class=\"held\" x=\"" << number(x - width / 2) << "\" y=\"" << number(begin) << "\" width=\""
                << number(width) << "\" height=\"" << number(y - begin) << "\" rx=\"2\"/>\n";
        }
        isHeld = false;
    };
    for (const Row& row : m_rows) {
        for (const Step* const step : row.steps) {
            if (step->session != Diagram::Session::SAME) {
                endAt(row.y);
            }
            if (step->session == Diagram::Session::BEGINS) {
                x = lifeline(*step);
                begin = row.y;
                isHeld = true;
            }
        }
    }
    endAt(height() - FOOT + 18);
}

void DiagramDrawing::writeRow(std::ostream& out, const Row& row) const {
    writeText(out, "small end", TIMES - 22, row.y + 4,
              row.repetitions > 1 ? seconds(row.begin) + " – " + seconds(row.end) : seconds(row.begin));
    for (const Step* const step : row.steps) {
        if (step->call != 0) {
            writeCall(out, row, *step);
        } else {
            writeChange(out, row, *step);
        }
    }
}

void DiagramDrawing::writeCall(std::ostream& out, const Row& row, const Step& step) const {
    const bool isService = step.side == Side::SERVICE;
    const double from = isService ? lifeline(step) : xOfService();
    const double to = isService ? xOfService() : xOfCore();
    const double middle = to - TO_SERVICE / 2;
    const std::string look = className(step.look);
    const std::string bold = look.empty() ? "" : " bold";
    out << "  <path class=\"line" << look << (step.isAnswered ? "" : " waiting") << "\" d=\"M" << number(from) << " "
        << number(row.y) << "H" << number(to - 4) << "\"/>\n";
    const std::string label =
        step.label + (row.repetitions > 1 ? " ×" + std::to_string(row.repetitions) : std::string());
    writeText(out, "code middle" + look + bold, middle, row.y - 7, shortened(label, MOST_LETTERS));
    if (!step.isAnswered) {
        writeText(out, "small middle", middle, row.y + 15, step.wantsAnswer ? "no answer" : "wants no answer");
        return;
    }
    writeText(out, "small middle" + look + bold, middle, row.y + 15, shortened(step.result, SMALL_LETTERS));
    double y = row.y + 15;
    for (const std::string& line : explanationLines(step)) {
        writeText(out, "small middle" + look, middle, y += LINE, line);
    }
}

void DiagramDrawing::writeChange(std::ostream& out, const Row& row, const Step& step) const {
    const double x = step.side ? (*step.side == Side::SERVICE ? xOfService() : xOfCore()) : lifeline(step);
    const std::string look = className(step.look);
    if (step.isEnd) {
        out << "  <path class=\"cross" << (step.look == Diagram::Look::FAILED ? "" : " plain") << "\" d=\"M"
            << number(x - 6) << " " << number(row.y - 6) << "l12 12m0 -12l-12 12\"/>\n";
    } else if (step.side) {
        out << "  <circle class=\"daemon\" cx=\"" << number(x) << "\" cy=\"" << number(row.y) << "\" r=\"5\"/>\n";
    }
    writeText(out, "small" + look + (look.empty() ? "" : " bold"), x + 12, row.y + 4, step.label);
}

} // namespace monitor
