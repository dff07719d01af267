#pragma once

#include <cstddef>
#include <map>
#include <utility>

namespace monitor {

// A map that keeps the entries that were added last: those whose sizes are `most` in sum, in whatever unit the caller
// counts. Without sizes, `most` entries.
template <class Key, class Value>
class BoundedMap {
public:
    explicit BoundedMap(std::size_t most) : m_most(most) {}

    // Null when there is none.
    Value* find(const Key& key) {
        const auto found = m_entries.find(key);
        return found == m_entries.end() ? nullptr : &found->second.value;
    }

    // Adds the entry, or replaces one. It stays even if it is larger than `most` by itself.
    Value& set(const Key& key, Value value, std::size_t size = 1) {
        erase(key);
        while (!m_entries.empty() && m_sum + size > m_most) {
            eraseOldest();
        }
        m_sum += size;
        const auto added = m_entries.emplace(key, Entry{std::move(value), m_next, size}).first;
        m_byAge.emplace(m_next++, added);
        return added->second.value;
    }

    void erase(const Key& key) {
        const auto found = m_entries.find(key);
        if (found != m_entries.end()) {
            m_sum -= found->second.size;
            m_byAge.erase(found->second.age);
            m_entries.erase(found);
        }
    }

    std::size_t size() const { return m_entries.size(); }

private:
    void eraseOldest() {
        const auto oldest = m_byAge.begin();
        m_sum -= oldest->second->second.size;
        m_entries.erase(oldest->second);
        m_byAge.erase(oldest);
    }

    struct Entry {
        Value value;
        unsigned long long age;
        std::size_t size;
    };

    std::size_t m_most;
    std::size_t m_sum = 0; // of the sizes
    unsigned long long m_next = 0;
    std::map<Key, Entry> m_entries;
    std::map<unsigned long long, typename std::map<Key, Entry>::iterator> m_byAge;
};

} // namespace monitor
