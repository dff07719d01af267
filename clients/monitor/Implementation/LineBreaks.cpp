#include "monitor/LineBreaks.h"

#include <algorithm>

namespace monitor {

namespace {

const std::size_t LEAST_TEXT = 20; // letters that a line keeps behind its indent

bool beginsLetter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80;
}

// Where the first `count` letters end.
std::size_t endOfLetters(std::string_view text, std::size_t count) {
    std::size_t at = 0;
    while (at < text.size() && (count > 0 || !beginsLetter(text[at]))) {
        count -= beginsLetter(text[at]) ? 1 : 0;
        ++at;
    }
    return at;
}

// How much of the text goes into a line: up to the last blank that fits, or up to its end when there is none. Blanks at
// its beginning are no place to break it.
std::size_t endOfLine(std::string_view text, std::size_t width) {
    const std::size_t most = endOfLetters(text, width);
    if (most == text.size()) {
        return most;
    }
    const std::size_t blank = text.rfind(' ', most);
    const std::size_t begin = text.find_first_not_of(' ');
    return blank == std::string_view::npos || blank < begin ? most : blank;
}

} // namespace

std::size_t letterCount(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), beginsLetter));
}

std::vector<std::string> brokenLines(const std::string& text, std::size_t width, std::size_t indent) {
    if (width == 0) {
        return {text};
    }
    indent = std::min(indent, width > LEAST_TEXT ? width - LEAST_TEXT : 0);
    std::vector<std::string> lines;
    std::string_view rest = text;
    do {
        const std::size_t before = lines.empty() ? 0 : indent;
        const std::size_t end = endOfLine(rest, width - before);
        std::string line = std::string(before, ' ') + std::string(rest.substr(0, end));
        line.erase(line.find_last_not_of(' ') + 1);
        lines.push_back(std::move(line));
        rest = rest.substr(end);
        rest = rest.substr(std::min(rest.find_first_not_of(' '), rest.size()));
    } while (!rest.empty());
    return lines;
}

} // namespace monitor
