#include "monitor/Latencies.h"

#include <algorithm>

namespace monitor {

namespace {

// How many binary digits a number has.
unsigned int widthOf(std::uint64_t value) {
    return value == 0 ? 0 : 64 - static_cast<unsigned int>(__builtin_clzll(value));
}

} // namespace

std::size_t Latencies::indexOf(std::uint64_t value) {
    const unsigned int width = widthOf(value);
    const unsigned int shift = width > FINE_BITS + 1 ? width - FINE_BITS - 1 : 0;
    return (std::size_t(shift) << FINE_BITS) + static_cast<std::size_t>(value >> shift);
}

// The middle of the values that have this index.
std::uint64_t Latencies::valueOf(std::size_t index) {
    const std::size_t own = std::size_t(2) << FINE_BITS;
    if (index < own) {
        return index;
    }
    const std::size_t shift = (index >> FINE_BITS) - 1;
    const std::uint64_t least = std::uint64_t(index - (shift << FINE_BITS)) << shift;
    return least + (std::uint64_t(1) << shift) / 2;
}

void Latencies::add(std::int64_t microseconds) {
    const std::int64_t value = std::max<std::int64_t>(microseconds, 0);
    ++m_count;
    ++m_counters[indexOf(static_cast<std::uint64_t>(value))];
    m_worst = std::max(m_worst, value);
}

std::int64_t Latencies::median() const {
    std::uint64_t seen = 0;
    for (std::size_t index = 0; index < COUNTERS; ++index) {
        seen += m_counters[index];
        if (seen * 2 > m_count) {
            return std::min(static_cast<std::int64_t>(valueOf(index)), m_worst);
        }
    }
    return 0;
}

} // namespace monitor
