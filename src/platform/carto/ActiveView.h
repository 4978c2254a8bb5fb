#pragma once

#include "platform/automation/AutomationObject.h"
#include "platform/carto/ScreenDisplay.h"
#include "platform/geometry/Envelope.h"

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace brevant::platform::carto {

/// The phases of drawing a view, with the codes callers pass; they combine as bits.
enum class ViewPhase : int {
    None = 0,
    Background = 1,
    Geography = 2,
    GeoSelection = 4,
    Graphics = 8,
    GraphicSelection = 16,
    Foreground = 32,
    All = 63,
};

/// One refresh asked of a view: a full one, or a partial one of some phases, optionally for
/// one object (a layer, an element) and one area.
struct RefreshRecord {
    bool full = false;
    ViewPhase phase = ViewPhase::All;
    std::shared_ptr<const automation::AutomationObject> data;
    std::optional<geometry::Envelope> envelope;
};

/// What a view tells its listeners: an item (a layer) added or deleted, its contents changed
/// (layers moved or cleared), or a refresh asked for.
struct ViewEvent {
    enum class Kind { ItemAdded, ItemDeleted, ContentsChanged, Refreshed };

    Kind kind = Kind::ContentsChanged;
    std::shared_ptr<const automation::AutomationObject> item;
    RefreshRecord refresh;
};

/// A view of a map or a page: its extent, its display transformation, and the refreshes asked
/// of it. Nothing is drawn here: refreshes are recorded (the last 1000 are kept) and passed to
/// listeners, such as a window that redraws the picture.
class ActiveView {
public:
    using Listener = std::function<void(const ViewEvent&)>;

    ActiveView() = default;
    ActiveView(const ActiveView&) = delete;
    ActiveView& operator=(const ActiveView&) = delete;
    virtual ~ActiveView() = default;

    /// The area shown: the visible bounds of the display transformation, or the full extent
    /// when none were set.
    geometry::Envelope extent() const;
    void setExtent(const geometry::Envelope& extent);
    /// The extent of everything the view can show, unless one was set.
    geometry::Envelope fullExtent() const;
    void setFullExtent(const geometry::Envelope& extent) { m_fullExtent = extent; }

    ScreenDisplay& screenDisplay() { return m_screen; }
    const ScreenDisplay& screenDisplay() const { return m_screen; }
    DisplayTransformation& displayTransformation() { return m_screen.displayTransformation(); }
    const DisplayTransformation& displayTransformation() const
    {
        return m_screen.displayTransformation();
    }

    /// Asks for the whole view to be redrawn.
    void refresh();
    /// Asks for some phases to be redrawn, optionally for one object and one area.
    void partialRefresh(ViewPhase phase,
                        std::shared_ptr<const automation::AutomationObject> data = nullptr,
                        std::optional<geometry::Envelope> envelope = std::nullopt);
    const std::deque<RefreshRecord>& refreshes() const { return m_refreshes; }
    void clearRefreshes() { m_refreshes.clear(); }

    /// Registers a listener; returns the id that removes it.
    int addListener(Listener listener);
    void removeListener(int id);

protected:
    /// The full extent when none was set.
    virtual geometry::Envelope naturalFullExtent() const = 0;
    void notify(const ViewEvent& event);

private:
    void record(RefreshRecord refresh);

    ScreenDisplay m_screen;
    std::optional<geometry::Envelope> m_fullExtent;
    std::deque<RefreshRecord> m_refreshes;
    std::vector<std::pair<int, Listener>> m_listeners;
    int m_nextListener = 1;
};

} // namespace brevant::platform::carto
