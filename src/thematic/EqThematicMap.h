#pragma once

#include "platform/carto/CharacterMarkerSymbol.h"
#include "platform/carto/ClassBreaksRenderer.h"
#include "platform/carto/MultiLayerMarkerSymbol.h"
#include "platform/carto/SimpleFillSymbol.h"
#include "platform/carto/Symbol.h"
#include "platform/carto/UniqueValueRenderer.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace brevant::platform::carto {
class FeatureLayer;
}
namespace brevant::platform::geodatabase {
class FeatureClass;
}

// Thematic layers of results and hazard data: a class-breaks or unique-value renderer on a
// feature class, optionally joined to a server table, added to CurrentMap.
//
// Thematic map types: 0 and 1 keep the layer's default renderer; 2 and 4 equal intervals; 3 the
// classes below and above a confidence value; 5 equal intervals drawn as contour fills
// (precision 4); 6, 7 and above unique values. Class counts, colours and unique-value titles,
// labels and values come per type from the host's ThematicClassSettings.
//
// The module keeps one precision, one number format and one classification settings object,
// replaced by every build. Every procedure runs under the chaining trap of the symbol factory
// (context::runChained): each level records the failure under its tag and raises it again with
// its number and source, its tag as the description, for the caller's trap to convert.
namespace brevant::thematic {

/// Builds a thematic layer of `fieldName` and puts it on CurrentMap. The precision is 4 for
/// type 5, else GetDisplayPrecision of the table and field. Type 3 first asks for a confidence
/// value from 0 to 100 ("Enter confidence value between 0 and 100", title "KORVAL", default
/// "50") until one fits; a cancelled (empty) answer ends the call quietly, without a layer and
/// without an error record. For every other type a non-empty range is widened by SetDelta on
/// both sides. A minimum below 0 becomes 0. `minimum` and `maximum` come back as used (for type
/// 3 the confidence value is the minimum). With `join` the values are read from the server
/// table `tableName` joined to its inventory class (GetJoinThmMap), otherwise from the feature
/// class `tableName` itself (GetSimpleThmMap). `databaseName` is the full path of the database
/// holding the feature class. The layer is named `layerName` when that is not empty, else
/// "Ground Water Depth" for the table "eqsrwdepth", table + "_" + field for types 2 to 5, and
/// the build's name for other types. It is made visible as asked and not selectable; a layer
/// of the same name is removed just before the new one is added, and the geography of the view
/// is refreshed. Tag " CreateThematicMap for " + table + " column " + field.
void CreateThematicMap(const std::string& tableName, const std::string& databaseName,
                       int16_t mapType, const std::string& fieldName, double& minimum,
                       double& maximum, bool join, bool visible, const std::string& layerName);

/// Builds a class-breaks layer of census tracts ("hztract" of `databaseName`) joined to the
/// server table `mapName`, or to the table `fieldOrTableName` when the map name is
/// "EqTractThMap", classifying the field `fieldOrTableName` with the number format of
/// `precision`. The range is widened and floored as CreateThematicMap does. The visible, not
/// selectable layer is named `fieldOrTableName` with `nameFlag`, else mapName + "_" +
/// fieldOrTableName, and replaces a layer of the same name on CurrentMap. Tag
/// " CreateThmMapForTract for  " + mapName + " column " + fieldOrTableName.
void CreateThmMapForTract(const std::string& mapName, const std::string& databaseName,
                          int16_t mapType, const std::string& fieldOrTableName, double minimum,
                          double maximum, int16_t precision, bool nameFlag);

/// A new, invisible layer (not on any map) over the inventory class of the result table
/// `tableName` joined to that table: "hz" + the table name without its first two characters,
/// "eqAebm" for "eqAebmRes" (any case), and the table itself for type 5. Types 2 to 5 get
/// GetCBRenderer, types above 5 GetUniquevalueRenderer and the unique-value title as layer
/// name; types below 2 keep the default renderer and the table's name. Uses the module's
/// current number format. Tag " GetJoinThmMap for " + table.
std::shared_ptr<platform::carto::FeatureLayer>
GetJoinThmMap(const std::string& tableName, const std::string& databaseName, int16_t mapType,
              const std::string& fieldName, double minimum, double maximum);

/// As GetJoinThmMap on the feature class `tableName` itself, without a join, with the number
/// format of precision 4. Tag " GetSimpleThmMap for " + table.
std::shared_ptr<platform::carto::FeatureLayer>
GetSimpleThmMap(const std::string& tableName, const std::string& databaseName, int16_t mapType,
                const std::string& fieldName, double minimum, double maximum);

/// Class breaks of `fieldName` for a map type (4 is handled as 2). The class count is
/// GetClassCount of the type, 1 when maximum equals minimum. Types 2, 5 and 8 break at equal
/// intervals from the minimum, each break rounded to the number format before the next is
/// added, the last at the maximum (one more interval when the maximum would fall below the
/// break before it), and are labelled "lower - upper" in general number form. Type 3 breaks at
/// 0, the confidence value (`minimum`) and the maximum, unlabelled. Classes are coloured with
/// GetClassColours, a map with an empty range with GetSingleColour; type 5 draws contour
/// fills. A field "paramvalue" (any case) gets an empty legend heading. Tag
/// " GetCBRenderer for table " + featureClassName.
platform::carto::ClassBreaksRenderer GetCBRenderer(const std::string& featureClassName,
                                                   int16_t mapType, int16_t symbolType,
                                                   const std::string& fieldName, double minimum,
                                                   double maximum);

/// One symbol per value of a unique-value map type, with the settings' labels and colours; the
/// field is declared text for field kind "C", numeric for "N". No default symbol. Tag
/// " GetUniquevalueRenderer for table " + featureClassName.
platform::carto::UniqueValueRenderer GetUniquevalueRenderer(const std::string& featureClassName,
                                                            int16_t mapType, int16_t symbolType,
                                                            const std::string& fieldName);

/// The symbol of one thematic class in a colour text ("red,green,blue"): symbol type 2 a new
/// solid fill; 3 every layer of the multi-layer line template recoloured; 1 only the layer at
/// index 1 of the multi-layer marker template recoloured. Throws AutomationError 91 without a
/// template or for another symbol type, 13 for a template of the wrong kind and 9 for a marker
/// template of fewer than two layers. Tag " CreateThmLayerSymbol".
platform::carto::Symbol
CreateThmLayerSymbol(const std::optional<platform::carto::Symbol>& symbolTemplate,
                     int16_t symbolType, const std::string& colour);

/// A contour class: a new solid fill in the colour with an outline of width 0. The template is
/// not used. Tag " CreateCntrLayerSymbol".
platform::carto::SimpleFillSymbol
CreateCntrLayerSymbol(const std::optional<platform::carto::Symbol>& symbolTemplate,
                      const std::string& colour);

/// The template of a thematic class: GetResultsPointSymbol for symbol type 1, the catalogue's
/// line symbol `name` for 3, the fixed polygon fill for 2, none for any other. Tag
/// " SymbolForTable for table " + name.
std::optional<platform::carto::Symbol> SymbolForTable(const std::string& name, int16_t symbolType);

/// 1 for a point class, 2 for a polygon class, 3 for a polyline class, 0 for any other shape.
/// Throws AutomationError 91 for a null class. Tag " GetSymbolType".
int16_t GetSymbolType(const std::shared_ptr<platform::geodatabase::FeatureClass>& featureClass);

/// Makes the module's number format that of `precision` and returns it: "0" for 0 or less,
/// else "0." and precision + 2 zeros. Class breaks are rounded to it, halves away from zero.
/// Tag " SetFormat for table " + tableName.
std::string SetFormat(int16_t precision, const std::string& tableName = {});

/// The widening of a value range at a precision: 10 to the power -(precision + 1), or 1 for a
/// precision of 0 or less. Tag " SetDelta ".
double SetDelta(int16_t precision);

/// The marker of thematic point classes: GetResultMarkerSymbol(1) then GetResultMarkerSymbol(2)
/// (layer 0 character 33, layer 1 character 40). Tag " GetResultsPointSymbol".
platform::carto::MultiLayerMarkerSymbol GetResultsPointSymbol();

/// A black character marker of "ESRI Default Marker", size 12, angle 0: character 33 for
/// index 1, 40 for any other index. Tag " GetResultMarkerSymbol".
platform::carto::CharacterMarkerSymbol GetResultMarkerSymbol(int16_t index);

} // namespace brevant::thematic
