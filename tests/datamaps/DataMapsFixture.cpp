#include "datamaps/DataMapsFixture.h"

#include "datamaps/EqDataMaps.h"
#include "host/HazardCodes.h"
#include "host/HostServices.h"
#include "host/UserMapRegistry.h"
#include "host/local/DefaultCatalogues.h"
#include "host/local/HostRoot.h"
#include "host/local/MapRegistration.h"
#include "host/local/Schemas.h"
#include "platform/automation/Collection.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/ui/ScriptedPrompts.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace brevant::test {

namespace geodatabase = platform::geodatabase;
namespace local = host::local;
using platform::automation::Collection;
using platform::automation::Variant;

namespace {

std::string ring(const MapPatch& p)
{
    std::ostringstream out;
    out.precision(17);
    out << "[[" << p.west << "," << p.south << "],[" << p.east << "," << p.south << "],["
        << p.east << "," << p.north << "],[" << p.west << "," << p.north << "],[" << p.west << ","
        << p.south << "]]";
    return out.str();
}

std::string json(const Variant& value)
{
    if (value.isNull() || value.isEmpty()) {
        return "null";
    }
    if (value.isNumeric()) {
        std::ostringstream out;
        out.precision(17);
        out << value.toDouble();
        return out.str();
    }
    return "\"" + value.toString() + "\"";
}

Variant codesOf(const std::vector<std::string>& codes)
{
    auto collection = std::make_shared<Collection>();
    for (const auto& code : codes) {
        collection->add(Variant(code));
    }
    return Variant(collection);
}

} // namespace

std::string MapPatch::wkt() const
{
    std::ostringstream out;
    out.precision(17);
    out << "POLYGON ((" << west << " " << south << ", " << east << " " << south << ", " << east
        << " " << north << ", " << west << " " << north << ", " << west << " " << south << "))";
    return out.str();
}

void DataMapsFixture::SetUp()
{
    InventoryRegionFixture::SetUp();
    const auto host = local::HostRoot::load(root());
    local::writeDefaultClassSettings(host.systemDataFolder());
    for (const char* name : {"RegionBndry.mdb", "Inundation.mdb"}) {
        local::createDatabase(*local::findDatabase(local::HostFolder::System, name),
                              host.systemDataFolder() + name);
        local::createDatabase(*local::findDatabase(local::HostFolder::Region, name),
                              regionFolder() + name);
    }
    fill("RegionBndry.mdb", "hzboundary", "RegionName",
         {{kWest, kSouth, kEast, kNorth, Variant("Testville")}});
    fill("RegionBndry.mdb", "hztract", "Tract",
         {{kWest, kSouth, kMiddle, kNorth, Variant("06001400100")},
          {kMiddle, kSouth, kEast, kNorth, Variant("06001400200")}});
    for (const char* table : {"hztract", "eqTract"}) {
        executeSql(local::createTableStatement(*local::findServerTable(table)));
    }
    executeSql("INSERT INTO hztract (Tract, CenLat, CenLongit) VALUES "
               "('06001400100', 37.825, -122.275), ('06001400200', 37.825, -122.225)");
    m_dataMaps = std::make_shared<datamaps::EqDataMaps>();
}

void DataMapsFixture::TearDown()
{
    m_dataMaps.reset();
    InventoryRegionFixture::TearDown();
}

void DataMapsFixture::registerMap(const std::string& code, const std::vector<MapPatch>& patches)
{
    const auto kind = host::findHazardCode(code);
    ASSERT_TRUE(kind.has_value()) << code;
    const auto folder = root() / "Sources";
    std::filesystem::create_directories(folder);
    const auto file = folder / (code + ".geojson");
    {
        std::ofstream out(file);
        out << R"({"type": "FeatureCollection", "features": [)";
        for (std::size_t i = 0; i < patches.size(); ++i) {
            out << (i ? "," : "") << R"({"type": "Feature", "properties": {")" << kind->valueField
                << R"(": )" << json(patches[i].value)
                << R"(}, "geometry": {"type": "Polygon", "coordinates": [)" << ring(patches[i])
                << "]}}";
        }
        out << "]}";
    }
    local::registerMap(root(), {"", code, {file, ""}, "", std::nullopt});
}

std::filesystem::path DataMapsFixture::userMapFile(const std::string& code) const
{
    std::string fileName;
    std::string className;
    std::string folder;
    host::hostServices().createUserMapRegistry()->GetUserMap(code, fileName, className, folder);
    return folder + fileName;
}

void DataMapsFixture::fill(const std::string& database, const std::string& name,
                           const std::string& field, const std::vector<MapPatch>& patches)
{
    auto target = regionClass(database, name);
    const int index = target->findField(field);
    ASSERT_GE(index, 0) << field << " of " << name;
    geodatabase::InsertCursor insert = target->insert();
    for (const MapPatch& patch : patches) {
        auto row = target->createRow();
        row.setShape(platform::geometry::Geometry::fromWkt(patch.wkt()));
        row.setValue(index, patch.value.isEmpty() ? Variant::null() : patch.value);
        insert.insertRow(row);
    }
    insert.flush();
}

std::shared_ptr<geodatabase::FeatureClass>
DataMapsFixture::regionClass(const std::string& database, const std::string& name) const
{
    return geodatabase::Workspace::open(regionFolder() + database).openFeatureClass(name);
}

std::vector<std::string> DataMapsFixture::valuesOf(const std::string& database,
                                                   const std::string& name,
                                                   const std::string& field) const
{
    const auto table = regionClass(database, name);
    const int index = table->findField(field);
    std::vector<std::string> values;
    geodatabase::Cursor cursor = table->search();
    geodatabase::Row row;
    while (cursor.next(row)) {
        const Variant value = row.value(index);
        values.push_back(value.isNull() ? "<null>" : value.toString());
    }
    std::sort(values.begin(), values.end());
    return values;
}

void DataMapsFixture::clip(const std::vector<std::string>& codes)
{
    Variant argument = codesOf(codes);
    m_dataMaps->ClipHazardDataMaps(argument);
}

void DataMapsFixture::clipInundation(const std::vector<std::string>& codes)
{
    Variant argument = codesOf(codes);
    m_dataMaps->ClipInundationMaps(argument);
}

std::vector<std::string> DataMapsFixture::logLines(const std::string& file) const
{
    std::vector<std::string> lines;
    std::istringstream in(readFile(regionFolder() + file));
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

bool DataMapsFixture::logged(const std::string& text, const std::string& file) const
{
    const auto lines = logLines(file);
    return std::any_of(lines.begin(), lines.end(),
                       [&](const std::string& line) { return line.rfind(text, 0) == 0; });
}

std::vector<std::string> DataMapsFixture::takeMessageTexts()
{
    std::vector<std::string> texts;
    for (const auto& message : m_prompts->takeMessages()) {
        texts.push_back(message.title + ": " + message.text);
    }
    return texts;
}

} // namespace brevant::test
