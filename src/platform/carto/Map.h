#pragma once

#include "platform/automation/AutomationObject.h"

#include <string>

namespace brevant::platform::carto {

/// A map of the host's map document: the layers the library draws on. The host owns it; the
/// library keeps a reference handed over through `m_pMap`.
class Map : public automation::AutomationObject {
public:
    explicit Map(std::string name = "Layers") : m_name(std::move(name)) {}

    std::string_view className() const override { return "Map"; }
    const std::string& name() const { return m_name; }
    void setName(std::string name) { m_name = std::move(name); }

private:
    std::string m_name;
};

} // namespace brevant::platform::carto
