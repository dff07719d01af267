#pragma once

#include <cstddef>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

namespace DAX::Common::Utils {

inline constexpr std::string_view HEXADECIMAL_DIGITS = "0123456789abcdef";

// Two lower-case digits for each byte, the first byte first. `Bytes` is any container of bytes.
template <class Bytes>
std::string toHexadecimal(const Bytes& bytes) {
    std::string text;
    text.reserve(2 * std::size(bytes));
    for (const auto byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        text += HEXADECIMAL_DIGITS[value / 16U];
        text += HEXADECIMAL_DIGITS[value % 16U];
    }
    return text;
}

// The bytes of which toHexadecimal() has made the text; empty when it is none of its texts.
template <class Bytes>
std::optional<Bytes> fromHexadecimal(std::string_view text) {
    if (text.size() % 2 != 0 || text.find_first_not_of(HEXADECIMAL_DIGITS) != text.npos) {
        return std::nullopt;
    }
    Bytes bytes;
    for (std::size_t at = 0; at < text.size(); at += 2) {
        const std::size_t value = 16 * HEXADECIMAL_DIGITS.find(text[at]) + HEXADECIMAL_DIGITS.find(text[at + 1]);
        bytes.push_back(static_cast<typename Bytes::value_type>(value));
    }
    return bytes;
}

} // namespace DAX::Common::Utils
