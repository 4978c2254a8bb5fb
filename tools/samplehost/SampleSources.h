#pragma once

#include "platform/geometry/ShapeType.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace brevant::samplehost {

/// How much data the sample host gets: Small for tests (a few hundred tracts, maps of a few
/// thousand polygons, a few thousand points; seconds), Medium about ten times that, Large for
/// benchmarks (statewide maps of more than 100,000 polygons each, more than 1,000,000 inventory
/// points; minutes).
enum class SampleSize { Small, Medium, Large };

/// One GeoPackage `<folder>/<name>.gpkg` holding one layer (feature class or table) `name`.
struct SourceLayer {
    std::filesystem::path path;
    std::string name;
};

/// Polygons of administrative or census units. Codes nest: a county's code starts with its
/// state's, a tract's with its county's, a block's with its tract's; units tile their parent
/// exactly, neighbours sharing their edges vertex for vertex.
struct UnitLayer {
    SourceLayer source;
    std::string codeField;
    /// Empty when the layer has none (blocks).
    std::string nameField;
    /// Empty when the layer has none (states).
    std::string populationField;
};

struct StateInfo {
    std::string code;
    std::string name;
    std::string abbreviation;
};

struct BlockLayer {
    std::string stateCode;
    UnitLayer layer;
};

/// A statewide site-condition map with planted faults for the builders to repair.
struct SiteMap {
    /// "SOIL", "LIQF", "LAND" or "WATR".
    std::string code;
    SourceLayer source;
    std::string valueField;
    /// OBJECTIDs of features whose value is invalid (blank or unknown text, a negative or
    /// out-of-range number, or null); at least one lies in the study region.
    std::vector<std::int64_t> invalidValueIds;
    /// OBJECTIDs of features whose shape is invalid (a self-intersecting bow-tie ring or a
    /// zero-area sliver); at least one of each lies in the study region.
    std::vector<std::int64_t> invalidShapeIds;
};

struct InundationMap {
    /// "DAMF", "TSUN", "SEIC" or "LEVF".
    std::string code;
    SourceLayer source;
    /// Depth in feet (a double).
    std::string depthField;
    /// The depth's class as text ("0-1 ft", "1-3 ft", "3-6 ft", "6-10 ft", "10+ ft").
    std::string classField;
    /// True for the map that lies wholly outside the study region's extent.
    bool outsideRegion = false;
};

struct GroundMotionMap {
    /// "PGAM", "PGVM", "SA03" or "SA10".
    std::string code;
    SourceLayer source;
    std::string valueField;
};

/// The probabilistic map: one field per parameter and return period, named parameter +
/// period ("pga500", "sa102500"), doubles.
struct ProbabilisticMap {
    SourceLayer source;
    std::vector<std::string> parameters;
    std::vector<int> returnPeriods;
};

/// A facility list or a network in the user's own fields.
struct InventoryLayer {
    SourceLayer source;
    platform::geometry::ShapeType shapeType = platform::geometry::ShapeType::Point;
    std::string idField;
    std::string nameField;
    std::int64_t count = 0;
};

struct EpicentreLayer {
    SourceLayer source;
    std::string idField;
    std::string magnitudeField;
    std::string depthField;
    std::string dateField;
};

struct FaultLayer {
    SourceLayer source;
    std::string idField;
    std::string nameField;
    std::string slipTypeField;
    std::string dipField;
};

/// The source files a user would bring to build a host root, all in geographic NAD83
/// (EPSG:4269), each layer in its own GeoPackage named after it. Field names are the user's,
/// not the system's. Three states: "06" California (the study region's), "32" Nevada,
/// "41" Oregon; the shapes are synthetic.
///
/// Boundaries and census units (polygons):
/// - `states`: STATEFP text(2), STUSPS text(2), NAME text(40).
/// - `counties`: GEOID text(5) = STATEFP + COUNTYFP, STATEFP text(2), COUNTYFP text(3),
///   NAME text(40), NAMELSAD text(60), POP integer.
/// - `tracts`: GEOID10 text(11) = county code + TRACTCE10, STATEFP10 text(2), COUNTYFP10
///   text(3), TRACTCE10 text(6), NAMELSAD10 text(40) ("Census Tract 1203.01"), POP10 integer,
///   HU10 integer.
/// - `blocks_06`, `blocks_32`, `blocks_41`: BLOCKID10 text(15) = tract code + 4 digits, POP10
///   integer, HU10 integer; block populations add up to their tract's.
/// - `study_region`: REGION_NM text(60); one feature, the dissolved study-region counties of
///   the first state, with a lake as a hole and an offshore island as a second part.
///
/// Statewide site-condition maps over the whole first state (polygons of 20 to 200 vertices
/// with gaps between them):
/// - `soil_sites`: SOIL_CLS text(2) "A" to "E", GEO_UNIT text(8).
/// - `liquefaction`: LIQ_SUSC integer 0 to 5, SUSC_DESC text(16).
/// - `landslide`: LS_CAT small integer 0 to 10.
/// - `groundwater`: GW_DEPTH double, feet, not negative.
///
/// Inundation maps (polygons): `dam_inundation`, `tsunami_inundation` (wholly outside the
/// region, on another stretch of coast), `seiche_inundation`, `levee_inundation`: DEPTH_FT
/// double, DEPTH_CLS text(8), SCENARIO text(60).
///
/// Ground-motion maps (contour bands around one scenario epicentre; the innermost band is a
/// disc, the others rings): `shake_pga` (g), `shake_pgv` (cm/s), `shake_sa03` (g),
/// `shake_sa10` (g): VALUE double, UNITS text(8).
///
/// Probabilistic map `USGS` (square cells over the region): GRID_ID integer, then pga, pgv,
/// sa03, sa10 for the return periods 100, 250, 500, 750, 1000, 1500, 2000, 2500 ("pga100" …
/// "sa102500"), increasing with the period.
///
/// Point inventory (about nine in ten inside the region, the rest around it):
/// - `schools`: SCHOOL_ID text(10), SCHOOL_NM text(60), ENROLL integer, LATITUDE double,
///   LONGITUDE double.
/// - `hospitals`: building footprints (polygons, some of several parts): HOSP_ID text(8),
///   FACNAME text(60), BEDS integer.
/// - `fire_stations`: STA_ID text(8), STA_NAME text(60), LATITUDE double, LONGITUDE double.
/// - `police_stations`: PD_ID text(8), PD_NAME text(60).
/// - `emergency_centers`: EOC_ID text(8), EOC_NAME text(60).
/// - `highway_bridges`: STRUCNUM text(15), FEAT_DESC text(40), YEAR_BUILT small integer,
///   LATITUDE double, LONGITUDE double.
/// - `buildings`: BLDG_ID text(10), ADDRESS text(60), OCCUPANCY text(5), STORIES small
///   integer (the bulk: 1,150,000 in the Large size, so that more than 1,000,000 inventory
///   points lie in the region).
///
/// Line inventory (polylines, some of several parts, some crossing the region boundary):
/// - `highways`: SEG_ID text(10), SEG_NAME text(60), ROUTE text(10), LANES small integer.
/// - `railways`: RR_ID text(10), RR_NAME text(60), OWNER text(40).
/// - `pipelines`: PIPE_ID text(10), PIPE_NAME text(60), SYSTEM text(16), DIAM_IN double.
///
/// Seismicity:
/// - `epicenters` (points over the states, in time order): EVENT_ID text(12), MAG double,
///   DEPTH_KM double, EVENT_DATE date, PLACE text(60).
/// - `faults` (polylines over the states): FAULT_ID integer, FAULT_NAME text(60), SLIP_TYPE
///   text(32), DIP_DEG double, SLIP_RATE double (mm/yr).
/// - `scenario_faults` (the faults of the region, also in `faults` under the same id): FLT_ID
///   integer, FLT_NAME text(60), SLIP_TYPE text(32), DIP_DEG double, MAX_MAG double,
///   WIDTH_KM double.
///
/// Other layers:
/// - `marplot` (points in the region): OBJ_NAME text(40), CHEMICAL text(30), QTY_LBS double.
/// - `flood_view` (square depth cells along a river in the region): DEPTH_FT double,
///   RET_PERIOD small integer.
/// - `flood_study_cases` (table): CASE_ID small integer, CASE_NAME text(40), HAZARD text(24),
///   CREATED date.
/// - `flood_losses` (table): CASE_ID small integer, RET_PERIOD text(10) ("10" … "500" or
///   "Annual"), ANALYSIS_OPT small integer (0 or 1), OCCUPANCY text(5), BLDG_LOSS double,
///   CONT_LOSS double (thousands of dollars). Cases 1, 2 and 4 have annual losses for option 0;
///   case 3 lacks them, case 5 has option 1 only and case 6 has no losses.
struct SampleSources {
    /// The three states; the first is the study region's.
    std::vector<StateInfo> states;
    std::string regionName;
    /// The counties dissolved into the study region, in code order.
    std::vector<std::string> regionCountyCodes;

    /// `states`: code STATEFP, name NAME, no population; the abbreviation is in STUSPS.
    UnitLayer stateBoundaries;
    std::string stateAbbreviationField;
    /// `counties`: code GEOID, name NAME, population POP.
    UnitLayer counties;
    /// `tracts`: code GEOID10, name NAMELSAD10, population POP10.
    UnitLayer tracts;
    /// One per state, in the order of `states`: code BLOCKID10, population POP10.
    std::vector<BlockLayer> blocks;
    /// `study_region`, its name in REGION_NM.
    SourceLayer regionBoundary;
    std::string regionNameField;

    /// SOIL, LIQF, LAND, WATR in that order.
    std::vector<SiteMap> siteMaps;
    /// DAMF, TSUN, SEIC, LEVF in that order.
    std::vector<InundationMap> inundationMaps;
    /// PGAM, PGVM, SA03, SA10 in that order.
    std::vector<GroundMotionMap> groundMotionMaps;
    ProbabilisticMap probabilisticMap;

    /// schools, hospitals (polygons), fire_stations, police_stations, emergency_centers,
    /// highway_bridges, buildings.
    std::vector<InventoryLayer> pointInventory;
    /// highways, railways, pipelines.
    std::vector<InventoryLayer> lineInventory;

    EpicentreLayer epicentres;
    FaultLayer faults;
    FaultLayer scenarioFaults;

    SourceLayer marPlot;
    SourceLayer floodView;
    SourceLayer floodStudyCases;
    SourceLayer floodLosses;
};

/// Writes the sample source files into `folder` (created when missing; files of the same
/// names are replaced). The same size and seed give the same features; another seed gives other
/// ones. `progress` is told each step as it starts. Throws PlatformError when a file cannot be
/// written.
SampleSources writeSampleSources(const std::filesystem::path& folder, SampleSize size,
                                 std::uint64_t seed,
                                 const std::function<void(const std::string& step)>& progress = {});

} // namespace brevant::samplehost
