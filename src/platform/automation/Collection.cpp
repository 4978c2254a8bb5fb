#include "platform/automation/Collection.h"

#include "platform/automation/AutomationError.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/ErrorNumbers.h"

namespace brevant::platform::automation {

namespace {
[[noreturn]] void outOfRange()
{
    throw AutomationError(ErrorNumber::SubscriptOutOfRange, "Brevant", "Subscript out of range");
}
} // namespace

std::shared_ptr<Collection> Collection::of(std::vector<Variant> values)
{
    auto collection = std::make_shared<Collection>();
    for (auto& value : values) {
        collection->add(std::move(value));
    }
    return collection;
}

void Collection::add(Variant item, std::string key)
{
    if (!key.empty() && findKey(key)) {
        throw AutomationError(ErrorNumber::DuplicateKey, "Brevant",
                              "This key is already associated with an element of this "
                              "collection: " +
                                  key);
    }
    m_items.push_back(std::move(item));
    m_keys.push_back(std::move(key));
}

const Variant& Collection::item(int32_t index) const
{
    if (index < 1 || index > count()) {
        outOfRange();
    }
    return m_items[static_cast<std::size_t>(index - 1)];
}

const Variant& Collection::item(std::string_view key) const
{
    if (auto at = findKey(key)) {
        return m_items[*at];
    }
    throw AutomationError(ErrorNumber::InvalidProcedureCall, "Brevant",
                          "Invalid procedure call or argument: no item with key " +
                              std::string(key));
}

void Collection::remove(int32_t index)
{
    if (index < 1 || index > count()) {
        outOfRange();
    }
    m_items.erase(m_items.begin() + (index - 1));
    m_keys.erase(m_keys.begin() + (index - 1));
}

bool Collection::operator==(const Collection& other) const
{
    return m_items == other.m_items;
}

std::optional<std::size_t> Collection::findKey(std::string_view key) const
{
    for (std::size_t i = 0; i < m_keys.size(); ++i) {
        if (!m_keys[i].empty() && equalsIgnoreCase(m_keys[i], key)) {
            return i;
        }
    }
    return std::nullopt;
}

} // namespace brevant::platform::automation
