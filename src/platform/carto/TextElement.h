#pragma once

#include "platform/carto/Element.h"
#include "platform/carto/TextSymbol.h"

#include <string>

namespace brevant::platform::carto {

/// A text on the page, placed at its point as the text symbol's alignment says.
class TextElement : public Element {
public:
    std::string_view className() const override { return "TextElement"; }

    const std::string& text() const { return m_text; }
    void setText(std::string text) { m_text = std::move(text); }
    const TextSymbol& symbol() const { return m_symbol; }
    void setSymbol(TextSymbol symbol) { m_symbol = std::move(symbol); }

private:
    std::string m_text;
    TextSymbol m_symbol;
};

} // namespace brevant::platform::carto
