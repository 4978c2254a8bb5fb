#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace brevant::platform::carto {

/// How a new set of features combines with a layer's current selection.
enum class SelectionResult : int {
    /// Replaces the selection.
    New = 0,
    /// Adds to it.
    Add = 1,
    /// Removes from it.
    Subtract = 2,
    /// Keeps only what both hold.
    And = 3,
    /// Selects what was not selected and unselects what was (symmetric difference).
    Xor = 4,
};

/// The selected features of a layer, by object identifier, in ascending identifier order.
class SelectionSet {
public:
    SelectionSet() = default;
    /// From identifiers in any order; duplicates count once.
    explicit SelectionSet(std::vector<int64_t> ids);

    const std::vector<int64_t>& ids() const { return m_ids; }
    int count() const { return static_cast<int>(m_ids.size()); }
    bool isEmpty() const { return m_ids.empty(); }
    bool contains(int64_t id) const;

    void add(int64_t id);
    void remove(int64_t id);
    void clear() { m_ids.clear(); }
    /// Combines `other` into this set.
    void combine(const SelectionSet& other, SelectionResult how);

    bool operator==(const SelectionSet&) const = default;

private:
    std::vector<int64_t> m_ids;
};

} // namespace brevant::platform::carto
