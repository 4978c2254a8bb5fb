#pragma once

#include "host/HostApplication.h"
#include "platform/automation/MemberTable.h"
#include "platform/automation/Variant.h"

namespace brevant::host::local {

/// The reference host's application object: one map document made of a focus map and a page
/// layout, both shared with whoever built it (the command line's "map" and "layout"). Scripts
/// read them as the properties FocusMap and PageLayout.
class LocalApplication : public HostApplication {
public:
    /// Puts a map frame of `map` on the page when the page shows none.
    LocalApplication(std::shared_ptr<platform::carto::Map> map,
                     std::shared_ptr<platform::carto::PageLayout> layout);

    std::string_view className() const override { return "Application"; }
    const platform::automation::MemberTable* members() const override;

    std::shared_ptr<platform::carto::Map> focusMap() const override { return m_map; }
    std::shared_ptr<platform::carto::PageLayout> pageLayout() const override { return m_layout; }
    platform::carto::ActiveView& activeView() const override;

    platform::automation::Variant FocusMap() const;
    platform::automation::Variant PageLayout() const;

private:
    std::shared_ptr<platform::carto::Map> m_map;
    std::shared_ptr<platform::carto::PageLayout> m_layout;
};

} // namespace brevant::host::local
