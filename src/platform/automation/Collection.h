#pragma once

#include "platform/automation/Variant.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brevant::platform::automation {

/// A one-based collection of variants with optional unique keys (case-insensitive), as the
/// host's collections are. Item 1 is the first added.
class Collection {
public:
    Collection() = default;
    /// A collection holding the given values, in order, without keys.
    static std::shared_ptr<Collection> of(std::vector<Variant> values);

    /// Appends an item; throws error 457 when the key is already used.
    void add(Variant item, std::string key = {});
    /// Item by one-based index; throws error 9 outside 1..count.
    const Variant& item(int32_t index) const;
    /// Item by key; throws error 5 when no item has it.
    const Variant& item(std::string_view key) const;
    /// Removes an item by one-based index; throws error 9 outside 1..count.
    void remove(int32_t index);
    int32_t count() const { return static_cast<int32_t>(m_items.size()); }

    auto begin() const { return m_items.begin(); }
    auto end() const { return m_items.end(); }

    bool operator==(const Collection& other) const;

private:
    std::optional<std::size_t> findKey(std::string_view key) const;

    std::vector<Variant> m_items;
    std::vector<std::string> m_keys;
};

} // namespace brevant::platform::automation
