#include "platform/carto/ActiveView.h"

#include <algorithm>

namespace brevant::platform::carto {

namespace {
constexpr std::size_t KeptRefreshes = 1000;
}

geometry::Envelope ActiveView::extent() const
{
    const geometry::Envelope& bounds = displayTransformation().visibleBounds();
    return bounds.isEmpty() ? fullExtent() : bounds;
}

void ActiveView::setExtent(const geometry::Envelope& extent)
{
    displayTransformation().setVisibleBounds(extent);
}

geometry::Envelope ActiveView::fullExtent() const
{
    return m_fullExtent ? *m_fullExtent : naturalFullExtent();
}

void ActiveView::refresh()
{
    record({true, ViewPhase::All, nullptr, std::nullopt});
}

void ActiveView::partialRefresh(ViewPhase phase,
                                std::shared_ptr<const automation::AutomationObject> data,
                                std::optional<geometry::Envelope> envelope)
{
    record({false, phase, std::move(data), envelope});
}

void ActiveView::record(RefreshRecord refresh)
{
    if (m_refreshes.size() == KeptRefreshes) {
        m_refreshes.pop_front();
    }
    m_refreshes.push_back(refresh);
    notify({ViewEvent::Kind::Refreshed, nullptr, std::move(refresh)});
}

int ActiveView::addListener(Listener listener)
{
    const int id = m_nextListener++;
    m_listeners.emplace_back(id, std::move(listener));
    return id;
}

void ActiveView::removeListener(int id)
{
    std::erase_if(m_listeners, [id](const auto& entry) { return entry.first == id; });
}

void ActiveView::notify(const ViewEvent& event)
{
    // A listener may remove itself or others while being told.
    const auto listeners = m_listeners;
    for (const auto& [id, listener] : listeners) {
        const bool stillThere = std::any_of(m_listeners.begin(), m_listeners.end(),
                                            [id](const auto& entry) { return entry.first == id; });
        if (stillThere) {
            listener(event);
        }
    }
}

} // namespace brevant::platform::carto
