#include "platform/carto/ClassBreaksRenderer.h"

#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"

#include <utility>

namespace brevant::platform::carto {

void ClassBreaksRenderer::setBreakCount(int count)
{
    if (count < 0) {
        throw automation::PlatformError(automation::ErrorNumber::InvalidProcedureCall, "Carto",
                                        "a class-breaks renderer cannot have " +
                                            std::to_string(count) + " breaks");
    }
    m_classes.resize(static_cast<std::size_t>(count));
}

const ClassBreaksRenderer::Class& ClassBreaksRenderer::at(int index) const
{
    if (index < 0 || index >= breakCount()) {
        throw automation::PlatformError(automation::ErrorNumber::SubscriptOutOfRange, "Carto",
                                        "class break " + std::to_string(index) +
                                            " of a renderer with " + std::to_string(breakCount()) +
                                            " breaks");
    }
    return m_classes[static_cast<std::size_t>(index)];
}

ClassBreaksRenderer::Class& ClassBreaksRenderer::at(int index)
{
    return const_cast<Class&>(std::as_const(*this).at(index));
}

double ClassBreaksRenderer::breakValue(int index) const
{
    return at(index).upper;
}

void ClassBreaksRenderer::setBreak(int index, double value)
{
    at(index).upper = value;
}

const std::string& ClassBreaksRenderer::label(int index) const
{
    return at(index).label;
}

void ClassBreaksRenderer::setLabel(int index, std::string label)
{
    at(index).label = std::move(label);
}

const std::optional<Symbol>& ClassBreaksRenderer::symbol(int index) const
{
    return at(index).symbol;
}

std::optional<Symbol>& ClassBreaksRenderer::symbol(int index)
{
    return at(index).symbol;
}

void ClassBreaksRenderer::setSymbol(int index, Symbol symbol)
{
    at(index).symbol = std::move(symbol);
}

int ClassBreaksRenderer::classIndex(double value) const
{
    // Breaks ascend; the first upper break at or above the value names the class.
    for (std::size_t i = 0; i < m_classes.size(); ++i) {
        if (value <= m_classes[i].upper) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

} // namespace brevant::platform::carto
