#include "host/local/LocalApplication.h"

#include "platform/automation/AutomationError.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/carto/Map.h"
#include "platform/carto/MapFrame.h"
#include "platform/carto/PageLayout.h"

namespace brevant::host::local {

using platform::automation::Variant;

LocalApplication::LocalApplication(std::shared_ptr<platform::carto::Map> map,
                                   std::shared_ptr<platform::carto::PageLayout> layout)
    : m_map(std::move(map)), m_layout(std::move(layout))
{
    // A document's page always shows its focus map; the frame fills the page inside a
    // half-inch margin until someone lays the page out.
    if (m_map && m_layout && !m_layout->graphicsContainer().findFrame(*m_map)) {
        constexpr double kMargin = 0.5;
        auto frame = std::make_shared<platform::carto::MapFrame>(m_map);
        frame->setGeometry(platform::carto::rectangleShape(
            {kMargin, kMargin, m_layout->pageWidth() - kMargin, m_layout->pageHeight() - kMargin}));
        m_layout->graphicsContainer().addElement(frame);
    }
}

const platform::automation::MemberTable* LocalApplication::members() const
{
    static const platform::automation::MemberTable table = [] {
        platform::automation::MemberTable t("Application");
        t.property("FocusMap", &LocalApplication::FocusMap)
            .property("PageLayout", &LocalApplication::PageLayout);
        return t;
    }();
    return &table;
}

platform::carto::ActiveView& LocalApplication::activeView() const
{
    if (!m_layout) {
        throw platform::automation::AutomationError(
            platform::automation::ErrorNumber::ObjectVariableNotSet, "Application",
            "Object variable or With block variable not set: the document has no page layout");
    }
    return m_layout->activeView();
}

Variant LocalApplication::FocusMap() const
{
    return m_map ? Variant(m_map) : Variant();
}

Variant LocalApplication::PageLayout() const
{
    return m_layout ? Variant(m_layout) : Variant();
}

} // namespace brevant::host::local
