#include "samplehost/SampleSources.h"

#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/geometry/Geometry.h"
#include "samplehost/RegionLayout.h"
#include "samplehost/SampleWriters.h"
#include "support/HostFixture.h"

#include <cmath>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <set>

namespace brevant::samplehost {
namespace {

namespace fs = std::filesystem;
using platform::automation::Variant;
using platform::geodatabase::Cursor;
using platform::geodatabase::FeatureClass;
using platform::geodatabase::Row;
using platform::geodatabase::Table;
using platform::geodatabase::Workspace;
using platform::geometry::Geometry;
using platform::geometry::ShapeType;

struct Feature {
    std::int64_t oid = 0;
    std::map<std::string, Variant> values;
    Geometry shape;
};

std::shared_ptr<Table> openLayer(const SourceLayer& layer)
{
    return Workspace::open(layer.path, true).openTable(layer.name);
}

std::vector<Feature> readAll(const SourceLayer& layer)
{
    const auto table = openLayer(layer);
    std::vector<Feature> features;
    Cursor cursor = table->search();
    Row row;
    while (cursor.next(row)) {
        Feature feature{row.oid(), {}, row.shape()};
        for (int i = table->hasShape() ? 2 : 1; i < table->fields().count(); ++i) {
            feature.values[table->fields().field(i).name] = row.value(i);
        }
        features.push_back(std::move(feature));
    }
    return features;
}

std::string text(const Variant& value)
{
    return value.isNull() ? std::string() : value.toString();
}

/// Features by the text of one field.
std::map<std::string, Feature> byCode(const SourceLayer& layer, const std::string& field)
{
    std::map<std::string, Feature> features;
    for (auto& feature : readAll(layer)) {
        const std::string code = text(feature.values.at(field));
        EXPECT_TRUE(features.emplace(code, std::move(feature)).second) << "duplicate " << code;
    }
    return features;
}

std::vector<SourceLayer> everyLayer(const SampleSources& s)
{
    std::vector<SourceLayer> layers{s.stateBoundaries.source,
                                    s.counties.source,
                                    s.tracts.source,
                                    s.regionBoundary,
                                    s.probabilisticMap.source,
                                    s.epicentres.source,
                                    s.faults.source,
                                    s.scenarioFaults.source,
                                    s.marPlot,
                                    s.floodView,
                                    s.floodStudyCases,
                                    s.floodLosses};
    for (const auto& b : s.blocks) {
        layers.push_back(b.layer.source);
    }
    for (const auto& m : s.siteMaps) {
        layers.push_back(m.source);
    }
    for (const auto& m : s.inundationMaps) {
        layers.push_back(m.source);
    }
    for (const auto& m : s.groundMotionMaps) {
        layers.push_back(m.source);
    }
    for (const auto& i : s.pointInventory) {
        layers.push_back(i.source);
    }
    for (const auto& i : s.lineInventory) {
        layers.push_back(i.source);
    }
    return layers;
}

/// Outer rings and holes of a polygon: a hole is a ring inside another ring.
std::pair<int, int> shellsAndHoles(const Geometry& polygon)
{
    const auto rings = polygon.parts();
    int holes = 0;
    for (std::size_t i = 0; i < rings.size(); ++i) {
        for (std::size_t j = 0; j < rings.size(); ++j) {
            if (i != j && Geometry::polygon({rings[j]}).contains(Geometry::point(rings[i][0]))) {
                ++holes;
                break;
            }
        }
    }
    return {static_cast<int>(rings.size()) - holes, holes};
}

void expectSameArea(double expected, double actual, const std::string& what)
{
    EXPECT_NEAR(expected, actual, 1e-9 * expected) << what;
}

class SampleSourceFiles : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_dir = std::make_unique<test::TempDir>();
        s_sources = writeSampleSources(s_dir->path() / "sources", SampleSize::Small, 11);
        s_region = readAll(s_sources.regionBoundary).at(0).shape;
    }
    static void TearDownTestSuite() { s_dir.reset(); }

    static inline std::unique_ptr<test::TempDir> s_dir;
    static inline SampleSources s_sources;
    static inline Geometry s_region;
};

TEST_F(SampleSourceFiles, EachFileHoldsOneLayerWithTheFieldsItIsDescribedBy)
{
    const auto layers = everyLayer(s_sources);
    EXPECT_EQ(layers.size(),
              static_cast<std::size_t>(std::distance(
                  fs::directory_iterator(s_dir->path() / "sources"), fs::directory_iterator())));
    for (const SourceLayer& layer : layers) {
        SCOPED_TRACE(layer.name);
        EXPECT_EQ(layer.path.filename(), layer.name + ".gpkg");
        const Workspace workspace = Workspace::open(layer.path, true);
        EXPECT_EQ(workspace.datasetNames(), std::vector<std::string>{layer.name});
        const auto table = workspace.openTable(layer.name);
        EXPECT_GT(table->rowCount(), 0);
        if (const auto features = std::dynamic_pointer_cast<FeatureClass>(table)) {
            EXPECT_EQ(features->spatialReference().name(), "GCS_North_American_1983");
        }
    }
    // Only the statewide maps hold shapes to repair.
    std::set<std::string> withPlantedShapes;
    for (const auto& map : s_sources.siteMaps) {
        withPlantedShapes.insert(map.source.name);
    }
    for (const SourceLayer& layer : layers) {
        if (withPlantedShapes.count(layer.name) == 0) {
            for (const Feature& feature : readAll(layer)) {
                ASSERT_TRUE(feature.shape.isNull() || feature.shape.isValid())
                    << layer.name << " " << feature.oid;
            }
        }
    }

    const auto hasFields = [](const SourceLayer& layer, std::vector<std::string> names) {
        const auto table = openLayer(layer);
        for (const auto& name : names) {
            EXPECT_GE(name.empty() ? 0 : table->findField(name), 0) << layer.name << "." << name;
        }
    };
    for (const UnitLayer* units : {&s_sources.stateBoundaries, &s_sources.counties,
                                   &s_sources.tracts, &s_sources.blocks[0].layer}) {
        hasFields(units->source, {units->codeField, units->nameField, units->populationField});
    }
    hasFields(s_sources.stateBoundaries.source, {s_sources.stateAbbreviationField});
    hasFields(s_sources.regionBoundary, {s_sources.regionNameField});
    for (const auto& map : s_sources.siteMaps) {
        hasFields(map.source, {map.valueField});
    }
    for (const auto& map : s_sources.inundationMaps) {
        hasFields(map.source, {map.depthField, map.classField});
    }
    for (const auto& map : s_sources.groundMotionMaps) {
        hasFields(map.source, {map.valueField});
    }
    for (const auto& list : {s_sources.pointInventory, s_sources.lineInventory}) {
        for (const auto& inventory : list) {
            hasFields(inventory.source, {inventory.idField, inventory.nameField});
            EXPECT_EQ(openLayer(inventory.source)->rowCount(), inventory.count);
        }
    }
    const auto& e = s_sources.epicentres;
    hasFields(e.source, {e.idField, e.magnitudeField, e.depthField, e.dateField});
    for (const FaultLayer* f : {&s_sources.faults, &s_sources.scenarioFaults}) {
        hasFields(f->source, {f->idField, f->nameField, f->slipTypeField, f->dipField});
    }
    std::vector<std::string> probabilistic;
    for (const auto& parameter : s_sources.probabilisticMap.parameters) {
        for (const int period : s_sources.probabilisticMap.returnPeriods) {
            probabilistic.push_back(parameter + std::to_string(period));
        }
    }
    EXPECT_EQ(probabilistic.size(), 32u);
    hasFields(s_sources.probabilisticMap.source, probabilistic);
}

TEST_F(SampleSourceFiles, TheSameSeedWritesTheSameFeaturesAndAnotherSeedOthers)
{
    // Written twice into one folder: the second run replaces the first's files.
    std::vector<std::string> steps;
    writeSampleSources(s_dir->path() / "again", SampleSize::Small, 11);
    const SampleSources again =
        writeSampleSources(s_dir->path() / "again", SampleSize::Small, 11,
                           [&](const std::string& step) { steps.push_back(step); });
    EXPECT_GT(steps.size(), 10u);
    const auto first = everyLayer(s_sources);
    const auto second = everyLayer(again);
    ASSERT_EQ(first.size(), second.size());
    for (std::size_t k = 0; k < first.size(); ++k) {
        SCOPED_TRACE(first[k].name);
        const auto a = readAll(first[k]);
        const auto b = readAll(second[k]);
        ASSERT_EQ(a.size(), b.size());
        for (std::size_t i = 0; i < a.size(); ++i) {
            ASSERT_EQ(a[i].values, b[i].values) << "feature " << a[i].oid;
            ASSERT_TRUE(a[i].shape.isNull() ? b[i].shape.isNull()
                                            : a[i].shape.equalsExact(b[i].shape))
                << "feature " << a[i].oid;
        }
    }
    EXPECT_EQ(again.siteMaps[0].invalidValueIds, s_sources.siteMaps[0].invalidValueIds);

    const SampleSources other = writeSampleSources(s_dir->path() / "other", SampleSize::Small, 12);
    for (const auto& [mine, theirs] :
         {std::pair(s_sources.tracts.source, other.tracts.source),
          std::pair(s_sources.siteMaps[0].source, other.siteMaps[0].source),
          std::pair(s_sources.pointInventory.back().source, other.pointInventory.back().source)}) {
        const auto a = readAll(mine);
        const auto b = readAll(theirs);
        bool differ = a.size() != b.size();
        for (std::size_t i = 0; !differ && i < a.size(); ++i) {
            differ = !a[i].shape.equalsExact(b[i].shape);
        }
        EXPECT_TRUE(differ) << mine.name;
    }
}

TEST_F(SampleSourceFiles, AFamilyWrittenAloneFromTheLayoutGivesTheFilesOfTheWholeRun)
{
    // Out of order and each family on its own: the lines after the bridges that stand on the
    // highways, the epicentres without the faults they cluster along. Nothing a writer draws
    // may reach another.
    const RegionLayout layout(SampleSize::Small, 11);
    const Output out{s_dir->path() / "alone", {}};
    fs::create_directories(out.folder);
    SampleSources alone;
    writePointInventory(layout, out, alone);
    writeEpicentres(layout, out, alone);
    writeLineInventory(layout, out, alone);
    writeFloodStudyCases(layout, out, alone);
    writeBoundaries(layout, out, alone);

    std::vector<std::pair<SourceLayer, SourceLayer>> pairs{
        {alone.epicentres.source, s_sources.epicentres.source},
        {alone.floodLosses, s_sources.floodLosses},
        {alone.tracts.source, s_sources.tracts.source},
        {alone.blocks.back().layer.source, s_sources.blocks.back().layer.source}};
    ASSERT_EQ(alone.pointInventory.size(), s_sources.pointInventory.size());
    for (std::size_t k = 0; k < alone.pointInventory.size(); ++k) {
        pairs.emplace_back(alone.pointInventory[k].source, s_sources.pointInventory[k].source);
    }
    ASSERT_EQ(alone.lineInventory.size(), s_sources.lineInventory.size());
    for (std::size_t k = 0; k < alone.lineInventory.size(); ++k) {
        pairs.emplace_back(alone.lineInventory[k].source, s_sources.lineInventory[k].source);
    }
    for (const auto& [mine, whole] : pairs) {
        SCOPED_TRACE(mine.name);
        EXPECT_EQ(mine.name, whole.name);
        const auto a = readAll(mine);
        const auto b = readAll(whole);
        ASSERT_EQ(a.size(), b.size());
        for (std::size_t i = 0; i < a.size(); ++i) {
            ASSERT_EQ(a[i].values, b[i].values) << "feature " << a[i].oid;
            ASSERT_TRUE(a[i].shape.isNull() ? b[i].shape.isNull()
                                            : a[i].shape.equalsExact(b[i].shape))
                << "feature " << a[i].oid;
        }
    }
    EXPECT_EQ(alone.regionName, s_sources.regionName);
    EXPECT_EQ(alone.regionCountyCodes, s_sources.regionCountyCodes);
}

TEST_F(SampleSourceFiles, CodesNestAndEveryUnitLiesInItsParent)
{
    const auto states = byCode(s_sources.stateBoundaries.source, "STATEFP");
    const auto counties = byCode(s_sources.counties.source, "GEOID");
    const auto tracts = byCode(s_sources.tracts.source, "GEOID10");
    ASSERT_EQ(states.size(), 3u);
    EXPECT_GT(tracts.size(), 200u);
    EXPECT_LT(tracts.size(), 1000u);

    const auto expectWithin = [](const Feature& child, const Feature& parent,
                                 const std::string& code) {
        EXPECT_LT(child.shape.difference(parent.shape).area(), 1e-9 * child.shape.area()) << code;
    };
    for (const auto& [code, county] : counties) {
        ASSERT_EQ(code.size(), 5u);
        ASSERT_TRUE(states.count(code.substr(0, 2))) << code;
        EXPECT_EQ(text(county.values.at("STATEFP")), code.substr(0, 2));
        expectWithin(county, states.at(code.substr(0, 2)), code);
    }
    std::map<std::string, std::int64_t> tractPeople;
    for (const auto& [code, tract] : tracts) {
        ASSERT_EQ(code.size(), 11u);
        ASSERT_TRUE(counties.count(code.substr(0, 5))) << code;
        EXPECT_EQ(text(tract.values.at("TRACTCE10")), code.substr(5));
        expectWithin(tract, counties.at(code.substr(0, 5)), code);
        tractPeople[code] = tract.values.at("POP10").toInt32();
    }
    for (const auto& blocks : s_sources.blocks) {
        std::map<std::string, std::int64_t> people;
        for (const auto& [code, block] : byCode(blocks.layer.source, "BLOCKID10")) {
            ASSERT_EQ(code.size(), 15u);
            ASSERT_EQ(code.substr(0, 2), blocks.stateCode);
            ASSERT_TRUE(tracts.count(code.substr(0, 11))) << code;
            expectWithin(block, tracts.at(code.substr(0, 11)), code);
            people[code.substr(0, 11)] += block.values.at("POP10").toInt32();
        }
        for (const auto& [tract, count] : people) {
            EXPECT_EQ(count, tractPeople.at(tract)) << tract;
        }
    }
}

TEST_F(SampleSourceFiles, UnitsTileTheirParentsWithoutGapsOrOverlaps)
{
    const auto states = byCode(s_sources.stateBoundaries.source, "STATEFP");
    std::map<std::string, std::vector<Geometry>> countiesOf;
    std::map<std::string, Geometry> countyShapes;
    for (const auto& [code, county] : byCode(s_sources.counties.source, "GEOID")) {
        countiesOf[code.substr(0, 2)].push_back(county.shape);
        countyShapes[code] = county.shape;
    }
    for (const auto& [code, state] : states) {
        double sum = 0;
        for (const auto& county : countiesOf[code]) {
            sum += county.area();
        }
        expectSameArea(state.shape.area(), sum, "counties of " + code);
        expectSameArea(state.shape.area(), Geometry::unionAll(countiesOf[code]).area(),
                       "union of the counties of " + code);
    }
    std::map<std::string, std::vector<Geometry>> tractsOf;
    for (const auto& [code, tract] : byCode(s_sources.tracts.source, "GEOID10")) {
        tractsOf[code.substr(0, 5)].push_back(tract.shape);
    }
    for (const auto& [code, county] : countyShapes) {
        double sum = 0;
        for (const auto& tract : tractsOf[code]) {
            sum += tract.area();
        }
        expectSameArea(county.area(), sum, "tracts of " + code);
    }
    const std::string first = s_sources.regionCountyCodes.front();
    expectSameArea(countyShapes[first].area(), Geometry::unionAll(tractsOf[first]).area(),
                   "union of the tracts of " + first);
}

TEST_F(SampleSourceFiles, TheRegionIsItsCountiesDissolvedWithALakeAndAnIsland)
{
    EXPECT_EQ(readAll(s_sources.regionBoundary).size(), 1u);
    ASSERT_GE(s_sources.regionCountyCodes.size(), 4u);
    const auto counties = byCode(s_sources.counties.source, "GEOID");
    double area = 0;
    for (const auto& code : s_sources.regionCountyCodes) {
        EXPECT_EQ(code.substr(0, 2), s_sources.states.front().code);
        area += counties.at(code).shape.area();
    }
    expectSameArea(area, s_region.area(), "region");
    const auto [shells, holes] = shellsAndHoles(s_region);
    EXPECT_GE(shells, 2) << "island";
    EXPECT_GE(holes, 1) << "lake";
    EXPECT_TRUE(s_region.isValid());
}

TEST_F(SampleSourceFiles, StatewideMapsCarryThePlantedInvalidValuesAndShapes)
{
    const auto state = byCode(s_sources.stateBoundaries.source, "STATEFP")
                           .at(s_sources.states.front().code)
                           .shape.envelope();
    const std::map<std::string, std::function<bool(const Variant&)>> valid{
        {"SOIL",
         [](const Variant& v) {
             return !v.isNull() &&
                    std::set<std::string>{"A", "B", "C", "D", "E"}.count(v.toString());
         }},
        {"LIQF",
         [](const Variant& v) { return !v.isNull() && v.toInt32() >= 0 && v.toInt32() <= 5; }},
        {"LAND",
         [](const Variant& v) { return !v.isNull() && v.toInt32() >= 0 && v.toInt32() <= 10; }},
        {"WATR", [](const Variant& v) { return !v.isNull() && v.toDouble() >= 0; }}};
    ASSERT_EQ(s_sources.siteMaps.size(), 4u);
    for (const SiteMap& map : s_sources.siteMaps) {
        SCOPED_TRACE(map.code);
        const auto features = readAll(map.source);
        EXPECT_GT(features.size(), 2000u);
        const std::set<std::int64_t> badValues(map.invalidValueIds.begin(),
                                               map.invalidValueIds.end());
        const std::set<std::int64_t> badShapes(map.invalidShapeIds.begin(),
                                               map.invalidShapeIds.end());
        EXPECT_GE(badValues.size(), 3u);
        EXPECT_GE(badShapes.size(), 2u);
        int badValuesInRegion = 0;
        int badShapesInRegion = 0;
        platform::geometry::Envelope extent;
        for (const Feature& feature : features) {
            extent = extent.united(feature.shape.envelope());
            // By the middle: predicates need valid shapes.
            const bool inRegion =
                s_region.contains(Geometry::point(feature.shape.envelope().center()));
            ASSERT_EQ(valid.at(map.code)(feature.values.at(map.valueField)),
                      !badValues.count(feature.oid))
                << "feature " << feature.oid;
            ASSERT_EQ(feature.shape.isValid(), !badShapes.count(feature.oid))
                << "feature " << feature.oid;
            if (!badShapes.count(feature.oid)) {
                EXPECT_GE(feature.shape.pointCount(), 21u);
                EXPECT_LE(feature.shape.pointCount(), 201u);
            }
            badValuesInRegion += badValues.count(feature.oid) && inRegion ? 1 : 0;
            badShapesInRegion += badShapes.count(feature.oid) && inRegion ? 1 : 0;
        }
        EXPECT_GE(badValuesInRegion, 1);
        EXPECT_GE(badShapesInRegion, 2);
        // Statewide, not only the region.
        EXPECT_GT(extent.width(), 0.9 * state.width());
        EXPECT_GT(extent.height(), 0.9 * state.height());
    }
}

TEST_F(SampleSourceFiles, InventoryLiesMostlyInTheRegionSomeOfItOutside)
{
    int inside = 0;
    int outside = 0;
    for (const InventoryLayer& inventory : s_sources.pointInventory) {
        SCOPED_TRACE(inventory.source.name);
        bool multipart = false;
        for (const Feature& feature : readAll(inventory.source)) {
            ASSERT_EQ(feature.shape.type(), inventory.shapeType);
            multipart = multipart || feature.shape.parts().size() > 1;
            (s_region.intersects(feature.shape) ? inside : outside)++;
        }
        if (inventory.shapeType == ShapeType::Polygon) {
            EXPECT_TRUE(multipart) << "footprints of several buildings";
        }
    }
    EXPECT_GT(inside, 5 * outside);
    // Lists that carry coordinates carry those of their points.
    for (const InventoryLayer& inventory : s_sources.pointInventory) {
        if (openLayer(inventory.source)->findField("LATITUDE") < 0) {
            continue;
        }
        for (const Feature& feature : readAll(inventory.source)) {
            ASSERT_NEAR(feature.values.at("LATITUDE").toDouble(), feature.shape.firstPoint().y,
                        1e-6);
            ASSERT_NEAR(feature.values.at("LONGITUDE").toDouble(), feature.shape.firstPoint().x,
                        1e-6);
        }
    }
    EXPECT_GT(outside, 50);
    for (const InventoryLayer& inventory : s_sources.lineInventory) {
        int crossing = 0;
        for (const Feature& feature : readAll(inventory.source)) {
            ASSERT_EQ(feature.shape.type(), ShapeType::Polyline);
            crossing +=
                s_region.intersects(feature.shape) && !feature.shape.within(s_region) ? 1 : 0;
        }
        EXPECT_GE(crossing, 1) << inventory.source.name;
    }
}

TEST_F(SampleSourceFiles, HazardMapsLieOverTheRegionExceptTheOneMeantToMissIt)
{
    const auto region = s_region.envelope();
    int outside = 0;
    for (const InundationMap& map : s_sources.inundationMaps) {
        platform::geometry::Envelope extent;
        for (const Feature& feature : readAll(map.source)) {
            extent = extent.united(feature.shape.envelope());
            EXPECT_GT(feature.values.at(map.depthField).toDouble(), 0.0);
        }
        EXPECT_EQ(!extent.intersects(region), map.outsideRegion) << map.code;
        outside += map.outsideRegion ? 1 : 0;
    }
    EXPECT_EQ(outside, 1);

    for (const GroundMotionMap& map : s_sources.groundMotionMaps) {
        // Bands from the epicentre outwards: each one larger, the shaking lower.
        const auto bands = readAll(map.source);
        ASSERT_GE(bands.size(), 8u) << map.code;
        for (std::size_t k = 1; k < bands.size(); ++k) {
            EXPECT_TRUE(bands[k].shape.isValid());
            EXPECT_LT(bands[k].values.at(map.valueField).toDouble(),
                      bands[k - 1].values.at(map.valueField).toDouble());
            EXPECT_LT(bands[k].shape.intersection(bands[k - 1].shape).area(), 1e-12);
        }
        EXPECT_TRUE(bands.back().shape.envelope().intersects(region));
    }

    const auto& usgs = s_sources.probabilisticMap;
    const auto cells = readAll(usgs.source);
    ASSERT_FALSE(cells.empty());
    EXPECT_TRUE(s_region.envelope().intersects(
        cells.front().shape.envelope().united(cells.back().shape.envelope())));
    for (const Feature& cell : cells) {
        for (const auto& parameter : usgs.parameters) {
            for (std::size_t k = 1; k < usgs.returnPeriods.size(); ++k) {
                ASSERT_GT(
                    cell.values.at(parameter + std::to_string(usgs.returnPeriods[k])).toDouble(),
                    cell.values.at(parameter + std::to_string(usgs.returnPeriods[k - 1]))
                        .toDouble())
                    << parameter << " in cell " << cell.oid;
            }
        }
    }
}

TEST_F(SampleSourceFiles, SeismicityAndFloodCasesHoldTogether)
{
    const auto& e = s_sources.epicentres;
    double previous = 0;
    for (const Feature& event : readAll(e.source)) {
        const double date = event.values.at(e.dateField).toDate().serial;
        EXPECT_GE(date, previous) << "in time order";
        previous = date;
        EXPECT_GE(event.values.at(e.magnitudeField).toDouble(), 2.5);
        EXPECT_LE(event.values.at(e.magnitudeField).toDouble(), 7.9);
        EXPECT_GT(event.values.at(e.depthField).toDouble(), 0.0);
    }

    // Every scenario fault is one of the statewide faults.
    std::map<int, Feature> faults;
    for (auto& fault : readAll(s_sources.faults.source)) {
        faults[fault.values.at(s_sources.faults.idField).toInt32()] = std::move(fault);
    }
    const auto& scenario = s_sources.scenarioFaults;
    const auto scenarioFaults = readAll(scenario.source);
    EXPECT_GE(scenarioFaults.size(), 3u);
    for (const Feature& fault : scenarioFaults) {
        const Feature& same = faults.at(fault.values.at(scenario.idField).toInt32());
        EXPECT_EQ(fault.values.at(scenario.nameField), same.values.at(s_sources.faults.nameField));
        EXPECT_TRUE(fault.shape.equalsExact(same.shape));
        EXPECT_TRUE(s_region.intersects(fault.shape));
    }

    // Only some study cases have annual losses for the first analysis option.
    std::set<int> cases;
    for (const Feature& row : readAll(s_sources.floodStudyCases)) {
        cases.insert(row.values.at("CASE_ID").toInt32());
    }
    std::set<int> annual;
    for (const Feature& row : readAll(s_sources.floodLosses)) {
        EXPECT_TRUE(cases.count(row.values.at("CASE_ID").toInt32()));
        if (text(row.values.at("RET_PERIOD")) == "Annual" &&
            row.values.at("ANALYSIS_OPT").toInt32() == 0) {
            annual.insert(row.values.at("CASE_ID").toInt32());
        }
    }
    EXPECT_EQ(cases, (std::set<int>{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(annual, (std::set<int>{1, 2, 4}));
}

} // namespace
} // namespace brevant::samplehost
