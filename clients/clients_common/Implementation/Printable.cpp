#include "clients_common/Printable.h"

#include <cstdint>

namespace clients_common {

namespace {

std::string escaped(char byte) {
    const char* const digits = "0123456789abcdef";
    const auto value = static_cast<unsigned char>(byte);
    return {'\\', 'x', digits[value / 16], digits[value % 16]};
}

// How many bytes the letter has with which the text begins; 0 when it is none that prints: a control character, or no
// UTF-8.
std::size_t letterLength(std::string_view text) {
    const auto byte = [&text](std::size_t index) {
        return index < text.size() ? static_cast<unsigned char>(text[index]) : 0U;
    };
    if (byte(0) < 0x80) {
        return byte(0) >= 0x20 && byte(0) != 0x7f ? 1 : 0;
    }
    const std::size_t length = byte(0) >= 0xf0 ? 4 : byte(0) >= 0xe0 ? 3 : 2;
    std::uint32_t letter = byte(0) & (0xffU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xc0U) != 0x80) {
            return 0;
        }
        letter = (letter << 6U) | (byte(i) & 0x3fU);
    }
    const std::uint32_t least[] = {0, 0, 0xa0, 0x800, 0x10000}; // shorter forms exist below, and control characters
    const bool isLetter = byte(0) >= 0xc2 && byte(0) <= 0xf4 && letter >= least[length] && letter <= 0x10ffff &&
                          (letter < 0xd800 || letter > 0xdfff) && letter != 0xfffe && letter != 0xffff;
    return isLetter ? length : 0;
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

} // namespace clients_common
