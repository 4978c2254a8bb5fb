#include "platform/carto/SelectionSet.h"

#include <algorithm>
#include <iterator>

namespace brevant::platform::carto {

SelectionSet::SelectionSet(std::vector<int64_t> ids) : m_ids(std::move(ids))
{
    std::sort(m_ids.begin(), m_ids.end());
    m_ids.erase(std::unique(m_ids.begin(), m_ids.end()), m_ids.end());
}

bool SelectionSet::contains(int64_t id) const
{
    return std::binary_search(m_ids.begin(), m_ids.end(), id);
}

void SelectionSet::add(int64_t id)
{
    const auto at = std::lower_bound(m_ids.begin(), m_ids.end(), id);
    if (at == m_ids.end() || *at != id) {
        m_ids.insert(at, id);
    }
}

void SelectionSet::remove(int64_t id)
{
    const auto at = std::lower_bound(m_ids.begin(), m_ids.end(), id);
    if (at != m_ids.end() && *at == id) {
        m_ids.erase(at);
    }
}

void SelectionSet::combine(const SelectionSet& other, SelectionResult how)
{
    const auto& a = m_ids;
    const auto& b = other.m_ids;
    std::vector<int64_t> result;
    switch (how) {
    case SelectionResult::New:
        result = b;
        break;
    case SelectionResult::Add:
        std::set_union(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(result));
        break;
    case SelectionResult::Subtract:
        std::set_difference(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(result));
        break;
    case SelectionResult::And:
        std::set_intersection(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(result));
        break;
    case SelectionResult::Xor:
        std::set_symmetric_difference(a.begin(), a.end(), b.begin(), b.end(),
                                      std::back_inserter(result));
        break;
    }
    m_ids = std::move(result);
}

} // namespace brevant::platform::carto
