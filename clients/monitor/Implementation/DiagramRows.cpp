#include "monitor/Implementation/DiagramRows.h"

#include <algorithm>
#include <map>
#include <set>

#include "monitor/LineBreaks.h"

namespace monitor {

namespace {

using Step = Diagram::Step;

const std::size_t MOST_LINES = 2; // of an explanation

// A call of the service with all that follows until the next one.
struct Unit {
    std::vector<DiagramRow> rows;
    std::string signature; // the same for units that may become one; empty for one that stands for itself
};

bool isCallOf(const Diagram::Step& step, Side side) {
    return step.call != 0 && step.side == side;
}

bool isClientLeaving(const Diagram::Step& step) {
    return step.call == 0 && step.isEnd && !step.side;
}

// A client has several connections, but it leaves once: with the one that ends its session, or with the last that does
// anything at all.
std::vector<const Step*> withoutRepeatedLeaving(const std::vector<Step>& steps, const DiagramLifelines& lifelines) {
    std::map<std::size_t, const Step*> last; // of each client
    for (const Step& step : steps) {
        if (isClientLeaving(step) || isCallOf(step, Side::SERVICE)) {
            last[lifelines.of(step)] = &step;
        }
    }
    std::vector<const Step*> kept;
    std::set<std::size_t> gone;
    for (const Step& step : steps) {
        const std::size_t client = lifelines.of(step);
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

std::vector<Unit> unitsOf(const std::vector<const Step*>& steps, const DiagramLifelines& lifelines) {
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
        DiagramRow& row = unit.rows.back();
        row.steps.push_back(&step);
        row.lines = std::max(row.lines, explanationLines(step).size());
        const bool isPlain = step.call != 0 && step.look == Diagram::Look::PLAIN && step.isAnswered;
        const bool isFirst = unit.rows.size() == 1 && unit.rows[0].steps.size() == 1;
        if (!isPlain) {
            unit.signature.clear();
        } else if (isFirst || !unit.signature.empty()) {
            unit.signature +=
                step.label + " " + (lifelines.has(step) ? std::to_string(lifelines.of(step)) : std::string()) + "\n";
        }
        previous = &step;
    }
    return units;
}

std::vector<DiagramRow> folded(const std::vector<Unit>& units) {
    std::vector<DiagramRow> rows;
    std::size_t next = 0;
    while (next < units.size()) {
        std::size_t last = next;
        while (!units[next].signature.empty() && last + 1 < units.size() &&
               units[last + 1].signature == units[next].signature) {
            ++last;
        }
        // The results of the last one are those that matter.
        for (std::size_t i = 0; i < units[last].rows.size(); ++i) {
            DiagramRow row = units[last].rows[i];
            row.begin = units[next].rows[i].begin;
            row.repetitions = last - next + 1;
            rows.push_back(row);
        }
        next = last + 1;
    }
    return rows;
}

} // namespace

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

std::vector<DiagramRow> diagramRows(const std::vector<Step>& steps, const DiagramLifelines& lifelines) {
    return folded(unitsOf(withoutRepeatedLeaving(steps, lifelines), lifelines));
}

} // namespace monitor
