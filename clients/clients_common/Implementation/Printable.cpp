#include "clients_common/Printable.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace clients_common {

namespace {

std::string escaped(char byte) {
    const char* const digits = "0123456789abcdef";
    const auto value = static_cast<unsigned char>(byte);
    return {'\\', 'x', digits[value / 16], digits[value % 16]};
}

struct Letter {
    std::size_t length; // in bytes; 0 for what is no UTF-8
    std::uint32_t code;
};

// The letter with which the text begins.
Letter firstLetter(std::string_view text) {
    const auto byte = [&text](std::size_t index) {
        return index < text.size() ? static_cast<unsigned char>(text[index]) : 0U;
    };
    if (byte(0) < 0x80) {
        return {1, byte(0)};
    }
    const std::size_t length = byte(0) >= 0xf0 ? 4 : byte(0) >= 0xe0 ? 3 : 2;
    std::uint32_t code = byte(0) & (0xffU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xc0U) != 0x80) {
            return {0, 0};
        }
        code = (code << 6U) | (byte(i) & 0x3fU);
    }
    const std::uint32_t least[] = {0, 0, 0x80, 0x800, 0x10000}; // shorter forms exist below
    const bool isLetter = byte(0) >= 0xc2 && byte(0) <= 0xf4 && code >= least[length] && code <= 0x10ffff &&
                          (code < 0xd800 || code > 0xdfff);
    return {isLetter ? length : 0, code};
}

// It changes the direction of what follows, so that a text reads as another one.
bool isDirection(std::uint32_t code) {
    return code == 0x61c || code == 0x200e || code == 0x200f || (code >= 0x202a && code <= 0x202e) ||
           (code >= 0x2066 && code <= 0x2069);
}

bool prints(std::uint32_t code) {
    const bool isControl = code < 0x20 || (code >= 0x7f && code < 0xa0);
    const bool isLineEnd = code == 0x2028 || code == 0x2029;
    const bool isNone = code == 0xfffe || code == 0xffff;
    return !isControl && !isLineEnd && !isNone && !isDirection(code);
}

// How many bytes the letter has with which the text begins; 0 when it is none that prints.
std::size_t letterLength(std::string_view text) {
    const Letter letter = firstLetter(text);
    return prints(letter.code) ? letter.length : 0;
}

} // namespace

std::string printable(std::string_view text, std::size_t most) {
    std::string shown;
    std::size_t at = 0;
    while (at < text.size() && at < most) {
        const std::size_t length = letterLength(text.substr(at));
        shown += length > 0 ? std::string(text.substr(at, length)) : escaped(text[at]);
        at += length > 0 ? length : 1;
    }
    return at < text.size() ? shown + "..." : shown;
}

std::string printableLines(std::string_view text) {
    std::string shown;
    for (std::size_t end = text.find_first_of("\n\t"); end != text.npos; end = text.find_first_of("\n\t")) {
        shown += printable(text.substr(0, end)) + text[end];
        text.remove_prefix(end + 1);
    }
    return shown + printable(text);
}

std::string printableJson(std::string_view json) {
    std::string shown;
    shown.reserve(json.size());
    while (!json.empty()) {
        const Letter letter = firstLetter(json);
        const std::size_t length = std::max<std::size_t>(letter.length, 1);
        if (json[0] == '\n' || (letter.length > 0 && prints(letter.code))) {
            shown += json.substr(0, length);
        } else {
            char text[7]; // letters that do not print have no more than 16 bits
            std::snprintf(text, sizeof text, "\\u%04x", letter.length > 0 ? letter.code & 0xffffU : 0xfffdU);
            shown += text;
        }
        json.remove_prefix(length);
    }
    return shown;
}

} // namespace clients_common
