#pragma once

#include <ostream>
#include <string>

namespace monitor {

// The parts of an SVG document, in pixels, as a Diagram needs them.

// Begins the document, with its style, the tips of its arrows and its paper.
void beginSvg(std::ostream& out, double width, double height);

void endSvg(std::ostream& out);

// A number as an attribute has it: "46", "46.5".
std::string svgNumber(double value);

// A line of text, at its left end, or where its classes say so. Any text may come that is UTF-8.
void writeSvgText(std::ostream& out, const std::string& classes, double x, double y, const std::string& text);

} // namespace monitor
