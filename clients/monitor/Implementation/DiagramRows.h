#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "monitor/Implementation/DiagramLifelines.h"

namespace monitor {

// The steps of a Diagram on one height: a call of the service, and the first call of the core that follows from it.
struct DiagramRow {
    std::vector<const Diagram::Step*> steps;
    std::size_t repetitions = 1;
    std::int64_t begin = 0; // since the first step
    std::int64_t end = 0;
    double y = 0;
    std::size_t lines = 0; // of explanations below the results
};

// From top to bottom, not placed yet. Calls that repeat themselves are one row; a client leaves once. The steps
// outlive the rows.
std::vector<DiagramRow> diagramRows(const std::vector<Diagram::Step>& steps, const DiagramLifelines& lifelines);

// The lines of an explanation, as far as there is room for them.
std::vector<std::string> explanationLines(const Diagram::Step& step);

// How many letters fit between two lifelines in the small type of results and explanations.
inline constexpr std::size_t SMALL_LETTERS = 50;

} // namespace monitor
