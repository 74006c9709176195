#pragma once
// A small map that keeps its entries in insertion order: XML attributes, option lists and
// other short tables whose order is part of their meaning.

#include <cstddef>
#include <utility>
#include <vector>

namespace ki::algo {

/// Key-value pairs in insertion order, each key at most once. Lookups are linear: meant for
/// the handful of entries an element or a menu carries, not for large tables.
template <typename K, typename V>
class GOrderedMap {
public:
    using value_type = std::pair<K, V>;
    using const_iterator = typename std::vector<value_type>::const_iterator;

    /// Appends the pair unless the key is already there; the first value of a key wins.
    /// Returns whether the pair was added.
    bool insert(const K& key, const V& value) {
        if (find(key) != nullptr) return false;
        m_items.emplace_back(key, value);
        return true;
    }

    const V* find(const K& key) const {
        for (const value_type& item : m_items)
            if (item.first == key) return &item.second;
        return nullptr;
    }
    V* find(const K& key) {
        for (value_type& item : m_items)
            if (item.first == key) return &item.second;
        return nullptr;
    }

    bool contains(const K& key) const { return find(key) != nullptr; }

    V value(const K& key, const V& defaultValue) const {
        const V* found = find(key);
        return found ? *found : defaultValue;
    }

    const value_type& at(std::size_t index) const { return m_items.at(index); }
    std::size_t size() const { return m_items.size(); }
    bool empty() const { return m_items.empty(); }
    void clear() { m_items.clear(); }
    void reserve(std::size_t n) { m_items.reserve(n); }

    const_iterator begin() const { return m_items.begin(); }
    const_iterator end() const { return m_items.end(); }

    /// Equal when both hold the same pairs in the same order.
    bool operator==(const GOrderedMap& other) const = default;

private:
    std::vector<value_type> m_items;
};

}  // namespace ki::algo
