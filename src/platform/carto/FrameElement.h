#pragma once

#include "platform/carto/Element.h"
#include "platform/carto/LineSymbol.h"
#include "platform/carto/SimpleFillSymbol.h"

#include <optional>

namespace brevant::platform::carto {

/// A rectangle on the page drawn with a border and, optionally, a background: the boxes that
/// group a page's titles and notes.
class FrameElement : public Element {
public:
    std::string_view className() const override { return "FrameElement"; }

    /// The border line (black, 1 point, unless set); none draws no border.
    const std::optional<LineSymbol>& border() const { return m_border; }
    void setBorder(std::optional<LineSymbol> border) { m_border = std::move(border); }
    const std::optional<SimpleFillSymbol>& background() const { return m_background; }
    void setBackground(std::optional<SimpleFillSymbol> background)
    {
        m_background = std::move(background);
    }

private:
    std::optional<LineSymbol> m_border = SimpleLineSymbol{};
    std::optional<SimpleFillSymbol> m_background;
};

} // namespace brevant::platform::carto
