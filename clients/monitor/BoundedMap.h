#pragma once

#include <cstddef>
#include <map>
#include <utility>

namespace monitor {

// A map that keeps the entries that were added last, `most` of them.
template <class Key, class Value>
class BoundedMap {
public:
    explicit BoundedMap(std::size_t most) : m_most(most) {}

    // Null when there is none.
    Value* find(const Key& key) {
        const auto found = m_entries.find(key);
        return found == m_entries.end() ? nullptr : &found->second.value;
    }

    // Adds the entry, or replaces one.
    Value& set(const Key& key, Value value) {
        erase(key);
        if (m_entries.size() == m_most) {
            m_entries.erase(m_byAge.begin()->second);
            m_byAge.erase(m_byAge.begin());
        }
        const auto added = m_entries.emplace(key, Entry{std::move(value), m_next}).first;
        m_byAge.emplace(m_next++, added);
        return added->second.value;
    }

    void erase(const Key& key) {
        const auto found = m_entries.find(key);
        if (found != m_entries.end()) {
            m_byAge.erase(found->second.age);
            m_entries.erase(found);
        }
    }

    std::size_t size() const { return m_entries.size(); }

private:
    struct Entry {
        Value value;
        unsigned long long age;
    };

    std::size_t m_most;
    unsigned long long m_next = 0;
    std::map<Key, Entry> m_entries;
    std::map<unsigned long long, typename std::map<Key, Entry>::iterator> m_byAge;
};

} // namespace monitor
