#include "monitor/Implementation/Svg.h"

#include <cstdio>

namespace monitor {

namespace {

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

} // namespace

std::string svgNumber(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", value);
    std::string result = text;
    return result.size() > 2 && result.compare(result.size() - 2, 2, ".0") == 0 ? result.substr(0, result.size() - 2)
                                                                                : result;
}

void writeSvgText(std::ostream& out, const std::string& classes, double x, double y, const std::string& text) {
    out << "  <text class=\"" << classes << "\" x=\"" << svgNumber(x) << "\" y=\"" << svgNumber(y) << "\">"
        << escaped(text) << "</text>\n";
}

void beginSvg(std::ostream& out, double width, double height) {
    const std::string size = svgNumber(width) + " " + svgNumber(height);
    out << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " << size << "\" width=\"" << svgNumber(width)
        << "\" height=\"" << svgNumber(height) << "\" role=\"img\" aria-labelledby=\"title\">\n"
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
    out << "  </defs>\n  <rect class=\"paper\" width=\"" << svgNumber(width) << "\" height=\"" << svgNumber(height)
        << "\" rx=\"12\"/>\n";
}

void endSvg(std::ostream& out) {
    out << "</svg>\n";
}

} // namespace monitor
