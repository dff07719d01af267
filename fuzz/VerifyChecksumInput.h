#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// An input of the target verify_checksum: one byte, the moves of a reader in four bytes each, and the rest. The high
// bit of the first byte tells whether the rest is the payload of a file that is written with its trailer, or a whole
// file. Its low five bits are the number of moves.
namespace DAX::Fuzz {

// A seek, followed by a read. The place is taken modulo the number of places in the payload and the one after them.
struct Move {
    std::uint16_t place;
    std::uint16_t length;
};

struct VerifyChecksumInput {
    bool written;
    std::vector<Move> moves;
    std::string rest;
};

constexpr std::size_t MAX_MOVES = 32;
constexpr std::uint8_t WRITTEN_BIT = 0x80;

inline VerifyChecksumInput readVerifyChecksumInput(const std::uint8_t* data, std::size_t size) {
    VerifyChecksumInput input;
    input.written = (data[0] & WRITTEN_BIT) != 0;
    const std::size_t moves = data[0] % MAX_MOVES;
    std::size_t next = 1;
    const auto number = [&] {
        const int low = data[next++];
        const int high = data[next++];
        return static_cast<std::uint16_t>(low + 256 * high);
    };
    while (input.moves.size() < moves && size - next >= 4) {
        const std::uint16_t place = number();
        input.moves.push_back({place, number()});
    }
    input.rest.assign(data + next, data + size);
    return input;
}

inline std::string makeVerifyChecksumInput(const VerifyChecksumInput& input) {
    std::string bytes(1, static_cast<char>(input.moves.size() | (input.written ? WRITTEN_BIT : 0U)));
    for (const Move& move : input.moves) {
        for (const int number : {move.place, move.length}) {
            bytes.push_back(static_cast<char>(number % 256));
            bytes.push_back(static_cast<char>(number / 256));
        }
    }
    return bytes + input.rest;
}

} // namespace DAX::Fuzz
