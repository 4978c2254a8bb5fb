// The site conditions of the inventory: how EqDataMaps keeps the stype, lqfsuscat, lndsuscat
// and w_depth of every inventory record in step with the clipped data maps.

#include "context/ContextObjects.h"
#include "context/EqUtilFunctions.h"
#include "context/ErrorTrap.h"
#include "context/StudyRegionContext.h"
#include "context/TractPoints.h"
#include "datamaps/EqDataMaps.h"
#include "host/GisDataService.h"
#include "host/GisUtilityService.h"
#include "host/HostServices.h"
#include "host/InventoryCatalogService.h"
#include "host/ProgressDialog.h"
#include "host/UserMapRegistry.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/VariantArray.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/ui/UserPrompts.h"

#include <sstream>

namespace brevant::datamaps {

namespace geodatabase = platform::geodatabase;
using platform::automation::AutomationError;
using platform::automation::Variant;
using platform::automation::LibraryCode::Procedure;
using platform::geodatabase::Field;
using platform::geodatabase::FieldType;

namespace {

constexpr const char* kUpdateFailed = "Updation of the Table failed , error number : ";
constexpr const char* kDependenciesFailed = "Upadtion of dependecies failed , ";

const context::StudyRegionContext& region()
{
    return context::studyRegionContext();
}

/// A line class keeps its site conditions in "Eq" + the name from its third character + "hft".
std::string lineHazardTableName(const std::string& className)
{
    return "Eq" + (className.size() > 2 ? className.substr(2) : std::string()) + "hft";
}

/// The catalogue's inventory classes as three parallel lists.
struct InventoryClasses {
    std::vector<std::string> names;
    std::vector<std::string> databases;
    std::vector<std::string> kinds;
};

std::vector<std::string> textsOf(const Variant& values)
{
    std::vector<std::string> texts;
    if (values.type() == platform::automation::VariantType::Array) {
        for (const Variant& value : values.array().elements()) {
            texts.push_back(value.toString());
        }
    }
    return texts;
}

InventoryClasses inventoryClasses()
{
    Variant names;
    Variant databases;
    Variant kinds;
    host::hostServices().createInventoryCatalogService()->GetInventoryClasses(names, databases,
                                                                              kinds);
    return {textsOf(names), textsOf(databases), textsOf(kinds)};
}

std::string upper(std::string text)
{
    for (char& c : text) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return text;
}

/// One site-condition field: its name, how it is added, the map that feeds it and the phrase
/// of its log lines.
struct SiteField {
    const char* name;
    Field field;
    const char* phrase;
};

const SiteField kSiteFields[] = {
    {"stype", Field{"stype", FieldType::String, 1, "stype", "D"}, " for Soil Map   : "},
    {"lqfsuscat", Field{"lqfsuscat", FieldType::SmallInteger, 0, "lqfsuscat"},
     " for Lqf Map   : "},
    {"lndsuscat", Field{"lndsuscat", FieldType::SmallInteger, 0, "lndsuscat"},
     " for Lnd Map   : "},
    {"w_depth", Field{"w_depth", FieldType::Double, 0, "w_depth"}, " for Water Map   : "},
};

/// A float written as text with no more digits than it needs, so 5.3f reads back as 5.3.
std::string shortest(float value)
{
    std::ostringstream out;
    out.precision(7);
    out << value;
    return out.str();
}

} // namespace

// ------------------------------------------------------------------ one table

void EqDataMaps::SyncInvtHft(std::string& TableName)
{
    context::runTrapped(" SyncInvtHft", Procedure, [&] {
        const std::string lower = platform::automation::toLower(TableName);
        if (lower == "hzdams" || lower == "hzhazmat" || lower == "hzlevees") {
            return;
        }
        m_log.create(region().RegionFolder + "DataMapsLog.txt");
        m_dialog = host::hostServices().createProgressDialog();
        m_dialog->SetStepCount(1);
        m_dialog->SetTitle("Updating ");
        m_dialog->SetMessage("Updating inventory table");
        m_dialog->Show();
        m_boundaryPath = region().RegionBoundaryPath;

        const SiteMaps maps = OpenEqMaps();
        if (!maps.soil && !maps.liquefaction && !maps.landslide && !maps.water) {
            m_dialog->Close();
            m_dialog.reset();
            m_log.close();
            return;
        }
        const std::string database =
            host::hostServices().createInventoryCatalogService()->GetDatabaseName(TableName);
        if (m_lineMode) {
            UpdateLineHazardTable(database, TableName, maps, 0);
        } else {
            UpdatePointHazardFields(database, TableName, maps, 0);
        }
        if (m_error) {
            platform::ui::userPrompts().messageBox("Some error occured in data maps processing, "
                                                   "please refer to DataMapsLog.txt in study "
                                                   "region",
                                                   "Korval", platform::ui::MessageButtons::Ok);
        }
        m_dialog->Close();
        m_dialog.reset();
        m_log.close();
    });
}

void EqDataMaps::UpdateLineHftforImport(std::string& HzTableName)
{
    context::runTrapped(" SyncLineHftforImportedData", Procedure, [&] {
        m_lineMode = true;
        SyncInvtHft(HzTableName);
        m_lineMode = false;
    });
}

void EqDataMaps::UpdatePonitHftforImport(std::string& HzTableName)
{
    context::runTrapped(" SyncLineHftforImportedData", Procedure, [&] {
        m_lineMode = false;
        SyncInvtHft(HzTableName);
    });
}

void EqDataMaps::SyncLineHftforImport(const std::string& HzTableName)
{
    context::runTrapped(" SyncLineHftforImport", Procedure, [&] {
        std::string name = HzTableName;
        UpdateLineHftforImport(name);
    });
}

void EqDataMaps::SyncPointHftforImport(const std::string& HzTableName)
{
    context::runTrapped(" SyncPointHftforImport", Procedure, [&] {
        std::string name = HzTableName;
        UpdatePonitHftforImport(name);
    });
}

// ------------------------------------------------------------------ maps and tables

EqDataMaps::SiteMaps EqDataMaps::OpenEqMaps()
{
    return context::runTrapped(" OpenEqMaps", Procedure, [&] {
        SiteMaps maps;
        const auto registry = host::hostServices().createUserMapRegistry();
        const std::string database = region().RegionFolder + "RegionBndry.mdb";
        const std::pair<const char*, FeatureClassPtr*> slots[] = {{"SOIL", &maps.soil},
                                                                  {"LIQF", &maps.liquefaction},
                                                                  {"LAND", &maps.landslide},
                                                                  {"WATR", &maps.water}};
        static const char* const kTargets[] = {"eqsrsoil", "eqsrlqf", "eqsrlnd", "eqsrwdepth"};
        for (std::size_t i = 0; i < std::size(slots); ++i) {
            std::string fileName;
            std::string className;
            std::string folder;
            registry->GetUserMap(slots[i].first, fileName, className, folder);
            if (!fileName.empty()) {
                *slots[i].second = context::contextGisDataService()
                                       .OpenFeatureClass(kTargets[i], database)
                                       .objectAs<geodatabase::FeatureClass>();
            }
        }
        return maps;
    });
}

bool EqDataMaps::OpenDataTable(const std::string& tableName, const std::string& databasePath,
                               FeatureClassPtr& table)
{
    return logged("Table : " + tableName + "Could not be opened from " + databasePath +
                      ", error number : ",
                  [&] {
                      table = context::contextGisDataService()
                                  .OpenFeatureClass(tableName, databasePath)
                                  .objectAs<geodatabase::FeatureClass>();
                      return true;
                  });
}

// ------------------------------------------------------------------ after clipping

void EqDataMaps::UpdateClippedMapDependencies(const std::vector<std::string>& clippedCodes)
{
    logged(kDependenciesFailed, [&] {
        m_log.blank();
        m_log.stamped("Starting Updation of Dependendent files for Cliiped Maps  : ");
        dialog().Show();
        dialog().SetTitle("Updating dependencies for the clipped maps");
        dialog().SetMessage("Initializing");
        const InventoryClasses classes = inventoryClasses();
        dialog().SetStepCount(static_cast<int32_t>(classes.names.size()) + 2);

        SiteMaps maps;
        static const struct {
            const char* code;
            const char* table;
            const char* opening;
            const char* opened;
            FeatureClassPtr SiteMaps::*slot;
        } kMaps[] = {
            {"SOIL", "eqsrsoil", "Opening Soil Map  : ", "Opened Soil Map  : ", &SiteMaps::soil},
            {"LIQF", "eqsrlqf", "Opening Lqf Map  : ", "Opened lqf Map  : ",
             &SiteMaps::liquefaction},
            {"LAND", "eqsrlnd", "Opening lnd Map  : ", "Opened lnd Map  : ", &SiteMaps::landslide},
            {"WATR", "eqsrwdepth", "Opening water Map  : ", "Opened water Map  : ",
             &SiteMaps::water},
        };
        for (const std::string& code : clippedCodes) {
            for (const auto& entry : kMaps) {
                if (code != entry.code) {
                    continue;
                }
                m_log.stamped(entry.opening);
                FeatureClassPtr map;
                if (OpenDataTable(entry.table, m_boundaryPath, map)) {
                    maps.*entry.slot = map;
                    m_log.stamped(entry.opened);
                }
            }
        }

        for (std::size_t i = 0; i < classes.names.size(); ++i) {
            const std::string& name = classes.names[i];
            const std::string kind = i < classes.kinds.size() ? upper(classes.kinds[i]) : "";
            const std::string database = i < classes.databases.size() ? classes.databases[i] : "";
            dialog().Advance();
            dialog().SetMessage("Processing " + name);
            const auto position = static_cast<int32_t>(i + 1);
            if (kind == "P") {
                m_log.blank();
                m_log.stamped("Processing Point " + name + "  at  : ");
                UpdatePointHazardFields(database, name, maps, position);
                m_log.stamped("Processed  at  : ");
            } else if (kind == "L") {
                m_log.blank();
                m_log.stamped("Processing Line " + name + "  at  : ");
                UpdateLineHazardTable(database, name, maps, position);
                m_log.stamped("Processed  at  : ");
            }
        }
        m_log.blank();
        m_log.stamped("Finished Updation of Dependendent files for Cliiped Maps  : ");
        return true;
    });
}

void EqDataMaps::UpdateAnalysisTables(const Variant& requestedCodes)
{
    logged(kDependenciesFailed, [&] {
        m_log.append(region().RegionFolder + "DataMapsLog.txt");
        m_dialog = host::hostServices().createProgressDialog();
        m_dialog->Show();
        m_dialog->SetTitle("Updating Analyis tables for clipped maps");
        m_dialog->SetMessage("Initializing");
        m_log.stamped("Starting Updation of Analyis files for Cliiped Maps  : ");
        const InventoryClasses classes = inventoryClasses();
        m_dialog->SetStepCount(static_cast<int32_t>(classes.names.size()) + 1);
        const auto utility = host::hostServices().createGisUtilityService();
        for (std::size_t i = 0; i < classes.names.size(); ++i) {
            const std::string& name = classes.names[i];
            const std::string kind = i < classes.kinds.size() ? upper(classes.kinds[i]) : "";
            const std::string database = i < classes.databases.size() ? classes.databases[i] : "";
            m_dialog->SetMessage("Updating table  " + name);
            if (kind == "P") {
                m_log.stamped("Updating Sql Table " + name + " : ");
                utility->UpdateAnalysisTable(name, database, requestedCodes, true);
                m_log.stamped("Updated Sql Table " + name + " : ");
            } else if (kind == "L") {
                m_log.stamped("Updating Sql Table " + name + " : ");
                utility->UpdateLineHazardTable(lineHazardTableName(name), database,
                                               requestedCodes);
                m_log.stamped("Updated Sql Table " + name + " : ");
            }
        }
        m_log.blank();
        m_log.stamped("Finished Updation of Analyis files for Cliiped Maps  : ");
        m_dialog->Close();
        m_dialog.reset();
        m_log.close();
        return true;
    });
    // A failure part way must not leave the window up or the log open.
    if (m_dialog) {
        m_dialog->Close();
        m_dialog.reset();
    }
    m_log.close();
}

// ------------------------------------------------------------------ per class

void EqDataMaps::UpdatePointHazardFields(const std::string& databaseName,
                                         const std::string& className, const SiteMaps& maps,
                                         int32_t position)
{
    logged(kUpdateFailed, [&] {
        dialog().SetPosition(position + 3);
        m_log.write("Opening table  " + className);
        const FeatureClassPtr table = context::contextGisDataService()
                                          .OpenFeatureClass(className,
                                                            region().RegionFolder + databaseName)
                                          .objectAs<geodatabase::FeatureClass>();
        if (table->rowCount({}, 1) == 0) {
            if (className != "eqTract") {
                m_log.write("Table  " + className + " is Empty");
                return true;
            }
            context::RecreateTractHFT();
        }
        if (className != "eqGrid" && className != "eqTract") {
            m_log.write("Adding Fields to   " + className);
            AddSiteConditionFields(*table);
        }
        ApplyDataMapValues(className, *table, maps);
        dialog().Advance();
        return true;
    });
}

void EqDataMaps::UpdateLineHazardTable(const std::string& databaseName,
                                       const std::string& className, const SiteMaps& maps,
                                       int32_t position)
{
    logged(kUpdateFailed, [&] {
        dialog().SetPosition(position + 1);
        const std::string hazardTable = lineHazardTableName(className);
        m_log.write("Opening table  " + className);
        const FeatureClassPtr table = context::contextGisDataService()
                                          .OpenFeatureClass(hazardTable,
                                                            region().RegionFolder + databaseName)
                                          .objectAs<geodatabase::FeatureClass>();
        if (table->rowCount({}, 1) == 0) {
            m_log.write("Table  " + hazardTable + " is Empty");
            return true;
        }
        dialog().Advance();
        ApplyDataMapValues(className, *table, maps);
        return true;
    });
}

void EqDataMaps::AddSiteConditionFields(geodatabase::Table& table)
{
    for (const SiteField& site : kSiteFields) {
        if (table.findField(site.name) < 0) {
            table.addField(site.field);
        }
    }
}

void EqDataMaps::ApplyDataMapValues(const std::string& className, geodatabase::FeatureClass& table,
                                    const SiteMaps& maps)
{
    logged(kUpdateFailed, [&] {
        std::string soil;
        int16_t liquefaction = 0;
        int16_t landslide = 0;
        float water = 0.0F;
        host::hostServices().createGisUtilityService()->GetDefaultSiteValues(soil, liquefaction,
                                                                             landslide, water);
        const std::pair<const FeatureClassPtr&, std::string> steps[] = {
            {maps.soil, soil},
            {maps.liquefaction, std::to_string(liquefaction)},
            {maps.landslide, std::to_string(landslide)},
            {maps.water, shortest(water)},
        };
        for (std::size_t i = 0; i < std::size(steps); ++i) {
            const FeatureClassPtr& map = steps[i].first;
            if (!map) {
                continue;
            }
            const SiteField& site = kSiteFields[i];
            m_log.stamped("Updating " + className + site.phrase);
            context::UpdateFieldValue(table, site.name, steps[i].second, "");
            AttachMapValue(table, *map, site.name);
            dialog().Advance();
            m_log.stamped((i == 0 ? "Updated new " : "Updated ") + className + site.phrase);
        }
        return true;
    });
}

void EqDataMaps::AttachMapValue(geodatabase::FeatureClass& table,
                                const geodatabase::FeatureClass& map, const std::string& field)
{
    // Only a polygon under the record (or touching it) gives a value: the default stays
    // for records outside every polygon of the map.
    context::UpdateFieldUsingIndexJoin(table, map, field, "type", true);
}

} // namespace brevant::datamaps
