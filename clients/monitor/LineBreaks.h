#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace monitor {

// How many letters a text has that is UTF-8.
std::size_t letterCount(std::string_view text);

// The text as lines of `width` letters at most, broken at blanks, and inside a word that is longer than a line. From
// the second on, they begin with `indent` blanks, or with fewer where the lines are so short that nothing would fit. A
// width of 0 breaks nothing.
std::vector<std::string> brokenLines(const std::string& text, std::size_t width, std::size_t indent);

} // namespace monitor
