#pragma once

#include <cstddef>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace DAX::Tests {

// What can become of the bytes of a good message, on purpose or by accident. It is the same in each run.

// The message cut off at every byte: all its proper beginnings, the empty one first.
inline std::vector<std::string> cutsOf(const std::string& bytes) {
    std::vector<std::string> cuts;
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        cuts.push_back(bytes.substr(0, length));
    }
    return cuts;
}

// Bytes with a meaning in an archive, and bytes without any.
inline const std::string TELLING_BYTES("0123456789 -+.ea\0\n\x7f\xff", 20);
inline const std::string FEW_TELLING_BYTES("09 -\0\xff", 6);

// The message with each byte in turn replaced by each of `values`.
inline std::vector<std::string> changesOf(const std::string& bytes, const std::string& values) {
    std::vector<std::string> changes;
    for (std::size_t position = 0; position < bytes.size(); ++position) {
        for (const char value : values) {
            if (value != bytes[position]) {
                changes.push_back(bytes);
                changes.back()[position] = value;
            }
        }
    }
    return changes;
}

// The tokens between the blanks, including those of the header, whose first one is the length of its signature.
inline std::vector<std::string> tokensOf(const std::string& bytes) {
    std::vector<std::string> tokens;
    std::istringstream text(bytes);
    for (std::string token; std::getline(text, token, ' ');) {
        tokens.push_back(token);
    }
    return tokens;
}

// The message with each token in turn replaced by each of `values`.
inline std::vector<std::string> tokenChangesOf(const std::string& bytes, const std::vector<std::string>& values) {
    const std::vector<std::string> tokens = tokensOf(bytes);
    std::vector<std::string> changes;
    for (std::size_t position = 0; position < tokens.size(); ++position) {
        for (const std::string& value : values) {
            std::string change;
            for (std::size_t index = 0; index < tokens.size(); ++index) {
                change += (index == 0 ? "" : " ") + (index == position ? value : tokens[index]);
            }
            changes.push_back(change);
        }
    }
    return changes;
}

// Lengths and counts that no message can hold.
inline const std::vector<std::string> HUGE_LENGTHS{"2147483648", "4294967296", "1000000000000000000"};

// Numbers beyond the range of every type that is read.
inline const std::vector<std::string> NUMBERS_OUT_OF_RANGE{"99999999999999999999", "-99999999999999999999", "1e999"};

// Bytes without any meaning, and bytes that look like the beginning of a message.
inline std::vector<std::string> noise(std::size_t size) {
    std::minstd_rand random(1);
    std::string any(size, '\0');
    for (char& byte : any) {
        byte = static_cast<char>(random() >> 8U);
    }
    const std::string header = "22 serialization::archive 18 ";
    return {any,
            header + any,
            std::string(size, '9'),
            std::string(size, ' '),
            header + std::string(size, ' '),
            header + std::string(size, '1')};
}

} // namespace DAX::Tests
