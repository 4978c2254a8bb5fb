#pragma once

#include "platform/automation/AutomationObject.h"
#include "platform/automation/MemberTable.h"
#include "platform/automation/Variant.h"

#include <cstdint>
#include <memory>
#include <string>

namespace brevant::platform::carto {
class Map;
class MapSurround;
class PageLayout;
enum class SurroundKind;
} // namespace brevant::platform::carto
namespace brevant::platform::geometry {
class Envelope;
struct Point;
} // namespace brevant::platform::geometry

namespace brevant::layout {

/// The printable layout view, the scenario layer, attribute selections and the query tool.
/// Every member traps its errors and logs them under its own tag (" " + member name; the
/// scenario layer's " for current scenario").
class EqCustomMap : public platform::automation::AutomationObject {
public:
    /// Opens the study-region context (see context::Init); throws when it fails, so a failing
    /// initialiser fails the creation of the object.
    EqCustomMap();

    std::string_view className() const override { return "EqCustomMap"; }
    const platform::automation::MemberTable* members() const override;

    /// Lays out the page of the host document that `vApplication` holds on a landscape page:
    /// the map frame moved to its place, earlier decorations removed, then border frames,
    /// titles, date, legend, north arrow, scale bar, credit line and logo.
    void CreateLayoutView(platform::automation::Variant& vApplication);
    /// Shows the faults of scenario `ImpScenId` of the "E" or "W" half as the layer "Hazard
    /// Scenario Layer" on CurrentMap, replacing an earlier one; any other half does nothing.
    void MapScenario(int16_t& ImpScenId, std::string& EastWestRegion);
    /// Removes the first "Hazard Scenario Layer" from CurrentMap, if there is one.
    void RemoveScenariolayer();
    /// Whether the layer's data lie in one of the region's inventory databases.
    bool IsEditable(platform::automation::Variant& vFeatureLayer);
    /// Makes the document's focus map CurrentMap and rewrites the query-tool table from it.
    void UpdateQuerytoolTable(const platform::automation::Variant& vApplication);
    /// Selects on the layer at `LayerPos` exactly the identifiers in the first field of
    /// `selRst`; an empty recordset shows a message and changes nothing.
    void ApplySelection(int32_t LayerPos, const std::string& layerName, int32_t LayerType,
                        const platform::automation::Variant& selRst);
    /// Adds the features of `whereClause` to the selection of the layer at `LayerPos`.
    void ApplySelectionForShapeFile(int32_t LayerPos, const std::string& layerName,
                                    int32_t LayerType, const std::string& whereClause);

private:
    // The page's procedures take the page layout, which is its own active view.
    void SetLayoutFrame(platform::carto::PageLayout& layout);
    void AddFrame(const platform::geometry::Envelope& rectangle,
                  platform::carto::PageLayout& layout);
    void AddLayoutText(const platform::geometry::Point& point, const std::string& text,
                       platform::carto::PageLayout& layout, double size);
    void AddLayoutSurround(platform::carto::SurroundKind kind,
                           const platform::geometry::Envelope& rectangle, const std::string& name,
                           const std::shared_ptr<platform::carto::Map>& map,
                           platform::carto::PageLayout& layout,
                           std::shared_ptr<platform::carto::MapSurround>& surround);
    void AddBitMapPicture(const platform::geometry::Envelope& rectangle,
                          platform::carto::PageLayout& layout);
    void CreateCustomQuerytool();
};

} // namespace brevant::layout
