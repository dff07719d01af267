#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// An input of the target serializers: rows of 17 bytes. The first byte's low two bits choose the type of a value, of 1,
// 2, 4 or 8 bytes, and its high four bits the width in which it is stored, 1 to 16 bytes. The other bytes are loaded;
// the first eight of them are also the value that is saved.
namespace DAX::Fuzz {

constexpr std::size_t MAX_WIDTH = 16;

struct Step {
    std::size_t type;  // the value has 2 to the power of `type` bytes
    std::size_t width; // 1 to MAX_WIDTH
    std::array<std::uint8_t, MAX_WIDTH> bytes;
};

inline std::vector<Step> readSerializersInput(const std::uint8_t* data, std::size_t size) {
    std::vector<Step> steps;
    for (; size > MAX_WIDTH; data += MAX_WIDTH + 1, size -= MAX_WIDTH + 1) {
        Step step{data[0] % 4U, 1U + data[0] / MAX_WIDTH, {}};
        for (std::size_t index = 0; index < MAX_WIDTH; ++index) {
            step.bytes[index] = data[1 + index];
        }
        steps.push_back(step);
    }
    return steps;
}

inline std::string makeSerializersInput(const std::vector<Step>& steps) {
    std::string bytes;
    for (const Step& step : steps) {
        bytes.push_back(static_cast<char>((step.width - 1) * MAX_WIDTH + step.type));
        bytes.append(step.bytes.begin(), step.bytes.end());
    }
    return bytes;
}

} // namespace DAX::Fuzz
