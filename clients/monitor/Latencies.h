#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace monitor {

// Counts times in a memory that stays the same, however many there are. The median is right to 1 part in 32, the worst
// exactly. In microseconds, from 0.
class Latencies {
public:
    void add(std::int64_t microseconds);

    std::uint64_t count() const { return m_count; }
    // 0 when there are none.
    std::int64_t median() const;
    std::int64_t worst() const { return m_worst; }

private:
    // Up to 64 microseconds each has a counter of its own; from there on, 32 counters for each power of two.
    static constexpr unsigned int FINE_BITS = 5;
    static constexpr std::size_t COUNTERS = std::size_t(64 - FINE_BITS + 1) << FINE_BITS;

    static std::size_t indexOf(std::uint64_t value);
    static std::uint64_t valueOf(std::size_t index);

    std::uint64_t m_count = 0;
    std::int64_t m_worst = 0;
    std::array<std::uint32_t, COUNTERS> m_counters{};
};

} // namespace monitor
