#include "monitor/Implementation/DiagramDrawing.h"

#include <algorithm>
#include <cstdio>

#include "monitor/Implementation/Svg.h"

namespace monitor {

namespace {

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
const std::size_t MOST_LETTERS = 46; // of a label between two lifelines

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

double xOfClient(std::size_t index) {
    return TIMES + CLIENT / 2 + CLIENT * static_cast<double>(index);
}

} // namespace

DiagramDrawing::DiagramDrawing(const std::vector<Step>& steps, const std::map<std::string, Caller>& callers,
                               bool toScale)
    : m_lifelines(steps, callers), m_rows(diagramRows(steps, m_lifelines)) {
    place(toScale);
}

void DiagramDrawing::place(bool toScale) {
    double y = HEAD;
    std::int64_t previous = 0;
    double linesAbove = 0;
    for (DiagramRow& row : m_rows) {
        const double least = (row.steps.front()->call != 0 ? ROW : CHANGE) + linesAbove;
        linesAbove = LINE * static_cast<double>(row.lines);
        const double scaled = static_cast<double>(row.begin - previous) / 1e6 * SCALE;
        y += toScale ? std::max(least, std::min(scaled, LONGEST_GAP)) : least;
        row.y = y;
        previous = row.begin;
    }
}

double DiagramDrawing::lifeline(const Step& step) const {
    return xOfClient(m_lifelines.of(step));
}

double DiagramDrawing::xOfService() const {
    return xOfClient(m_lifelines.heads().size() - 1) + TO_SERVICE;
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
    beginSvg(out, width(), height());
    writeLifelines(out);
    writeSessions(out);
    for (const DiagramRow& row : m_rows) {
        writeRow(out, row);
    }
    writeSvgText(
        out, "small", 24, height() - 20,
        "Times in seconds. Bar: holds the service. Amber: refused. Red: failed. Dashed: no answer. ×N: N calls, with "
        "the result of the last one." +
            (leftOut > 0 ? " " + std::to_string(leftOut) + " more calls and changes are not drawn." : std::string()));
    endSvg(out);
}

void DiagramDrawing::writeLifelines(std::ostream& out) const {
    const auto head = [&](const char* box, double x, double boxWidth, const std::string& title,
                          const std::string& below) {
        out << "  <path class=\"life\" d=\"M" << svgNumber(x) << " 76V" << svgNumber(height() - FOOT + 18) << "\"/>\n";
        out << "  <rect class=\"" << box << "\" x=\"" << svgNumber(x - boxWidth / 2) << "\" y=\"20\" width=\""
            << svgNumber(boxWidth) << "\" height=\"56\" rx=\"6\"/>\n";
        writeSvgText(out, "title middle", x, below.empty() ? 53 : 44, title);
        if (!below.empty()) {
            writeSvgText(out, "small middle", x, 64, below);
        }
    };
    for (std::size_t i = 0; i < m_lifelines.heads().size(); ++i) {
        const auto& [client, process] = m_lifelines.heads()[i];
        head("box", xOfClient(i), CLIENT - 14, client, process);
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
            out << "  <rect class=\"held\" x=\"" << svgNumber(x - width / 2) << "\" y=\"" << svgNumber(begin)
                << "\" width=\"" << svgNumber(width) << "\" height=\"" << svgNumber(y - begin) << "\" rx=\"2\"/>\n";
        }
        isHeld = false;
    };
    for (const DiagramRow& row : m_rows) {
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

void DiagramDrawing::writeRow(std::ostream& out, const DiagramRow& row) const {
    writeSvgText(out, "small end", TIMES - 22, row.y + 4,
                 row.repetitions > 1 ? seconds(row.begin) + " – " + seconds(row.end) : seconds(row.begin));
    for (const Step* const step : row.steps) {
        if (step->call != 0) {
            writeCall(out, row, *step);
        } else {
            writeChange(out, row, *step);
        }
    }
}

void DiagramDrawing::writeCall(std::ostream& out, const DiagramRow& row, const Step& step) const {
    const bool isService = step.side == Side::SERVICE;
    const double from = isService ? lifeline(step) : xOfService();
    const double to = isService ? xOfService() : xOfCore();
    const double middle = to - TO_SERVICE / 2;
    const std::string look = className(step.look);
    const std::string bold = look.empty() ? "" : " bold";
    out << "  <path class=\"line" << look << (step.isAnswered ? "" : " waiting") << "\" d=\"M" << svgNumber(from) << " "
        << svgNumber(row.y) << "H" << svgNumber(to - 4) << "\"/>\n";
    const std::string label =
        step.label + (row.repetitions > 1 ? " ×" + std::to_string(row.repetitions) : std::string());
    writeSvgText(out, "code middle" + look + bold, middle, row.y - 7, shortened(label, MOST_LETTERS));
    if (!step.isAnswered) {
        writeSvgText(out, "small middle", middle, row.y + 15, step.wantsAnswer ? "no answer" : "wants no answer");
        return;
    }
    writeSvgText(out, "small middle" + look + bold, middle, row.y + 15, shortened(step.result, SMALL_LETTERS));
    double y = row.y + 15;
    for (const std::string& line : explanationLines(step)) {
        writeSvgText(out, "small middle" + look, middle, y += LINE, line);
    }
}

void DiagramDrawing::writeChange(std::ostream& out, const DiagramRow& row, const Step& step) const {
    const double x = step.side ? (*step.side == Side::SERVICE ? xOfService() : xOfCore()) : lifeline(step);
    const std::string look = className(step.look);
    if (step.isEnd) {
        out << "  <path class=\"cross" << (step.look == Diagram::Look::FAILED ? "" : " plain") << "\" d=\"M"
            << svgNumber(x - 6) << " " << svgNumber(row.y - 6) << "l12 12m0 -12l-12 12\"/>\n";
    } else if (step.side) {
        out << "  <circle class=\"daemon\" cx=\"" << svgNumber(x) << "\" cy=\"" << svgNumber(row.y) << "\" r=\"5\"/>\n";
    }
    writeSvgText(out, "small" + look + (look.empty() ? "" : " bold"), x + 12, row.y + 4, step.label);
}

} // namespace monitor
