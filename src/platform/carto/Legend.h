#pragma once

#include "platform/carto/MapSurround.h"
#include "platform/carto/TextSymbol.h"

#include <string>

namespace brevant::platform::carto {

/// A legend of the map's visible feature layers, built when it is drawn from each layer's
/// renderer: the layer name, the renderer's heading, and one patch with its label per symbol.
/// It is shrunk to fit its frame.
class Legend : public MapSurround {
public:
    std::string_view className() const override { return "Legend"; }
    SurroundKind kind() const override { return SurroundKind::Legend; }

    const std::string& title() const { return m_title; }
    void setTitle(std::string title) { m_title = std::move(title); }
    bool showTitle() const { return m_showTitle; }
    void setShowTitle(bool show) { m_showTitle = show; }
    /// The text symbol of labels; layer names and the title are drawn larger and bold.
    const TextSymbol& textSymbol() const { return m_text; }
    void setTextSymbol(TextSymbol symbol) { m_text = std::move(symbol); }

private:
    std::string m_title = "Legend";
    bool m_showTitle = true;
    TextSymbol m_text{.size = 8.0};
};

} // namespace brevant::platform::carto
