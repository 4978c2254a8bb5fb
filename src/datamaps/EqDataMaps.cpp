#include "datamaps/EqDataMaps.h"

#include "context/ContextObjects.h"
#include "context/EqShape.h"
#include "context/EqUtilFunctions.h"
#include "context/ErrorTrap.h"
#include "context/StudyRegionContext.h"
#include "host/GisDataService.h"
#include "host/HostServices.h"
#include "host/ProgressDialog.h"
#include "host/UserMapRegistry.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/geodatabase/DatasetReplacement.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Geoprocessor.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/ui/UserPrompts.h"
#include "thematic/EqThematicMap.h"

namespace brevant::datamaps {

namespace geodatabase = platform::geodatabase;
using platform::automation::AutomationError;
using platform::automation::Collection;
using platform::automation::Variant;
using platform::automation::LibraryCode::MapLayer;
using platform::automation::LibraryCode::Procedure;

namespace {

constexpr const char* kFailureMessage =
    "Some error occured in data maps processing, please refer to DataMapsLog.txt in study region";

const context::StudyRegionContext& region()
{
    return context::studyRegionContext();
}

EqDataMaps::FeatureClassPtr openClass(const std::string& name, const std::string& database)
{
    return context::contextGisDataService()
        .OpenFeatureClass(name, database)
        .objectAs<geodatabase::FeatureClass>();
}

/// The registry's entry of a code: database file name (empty when the user gave no map), class
/// name and folder.
struct UserMap {
    std::string fileName;
    std::string className;
    std::string folder;

    bool present() const { return !fileName.empty(); }
    EqDataMaps::FeatureClassPtr open() const { return openClass(className, folder + fileName); }
};

UserMap userMapOf(host::UserMapRegistry& registry, const std::string& code)
{
    UserMap map;
    registry.GetUserMap(code, map.fileName, map.className, map.folder);
    return map;
}

std::shared_ptr<Collection> codesOf(const Variant& codes)
{
    if (auto collection = codes.collection()) {
        return collection;
    }
    return context::GetCollectionfromVariant(codes);
}

void showFailureMessage()
{
    platform::ui::userPrompts().messageBox(kFailureMessage, "Korval",
                                           platform::ui::MessageButtons::Ok);
}

/// The class `name` of the database at `databasePath`, made empty from the template in
/// `templatePath` when the region lacks it (then `created` is set): a run cut short elsewhere
/// may have lost it, and without it no later run could clip the map again.
EqDataMaps::FeatureClassPtr targetClass(const std::string& name, const std::string& databasePath,
                                        const std::string& templatePath, bool* created = nullptr)
{
    geodatabase::Workspace workspace = geodatabase::Workspace::open(databasePath);
    if (created) {
        *created = !workspace.exists(name);
    }
    if (workspace.exists(name)) {
        return workspace.openFeatureClass(name);
    }
    const EqDataMaps::FeatureClassPtr templateClass = openClass(name, templatePath);
    return workspace.createFeatureClass(name, templateClass->fields(), templateClass->shapeType(),
                                        templateClass->spatialReference(), "Shape");
}

/// The target of a map without content, made from the template when missing.
void emptyTarget(const std::string& name, const std::string& databasePath,
                 const std::string& templatePath)
{
    bool created = false;
    const auto target = targetClass(name, databasePath, templatePath, &created);
    if (!created) {
        target->deleteSearchedRows();
    }
}

/// Runs `fill` on a new content of `target` made with the fields of `schema` and puts it in
/// place of the old only when `fill` returns true; otherwise, or on an error, the old rows stay.
template <class Fill>
bool replaceContent(EqDataMaps::FeatureClassPtr& target, const geodatabase::FeatureClass& schema,
                    Fill&& fill)
{
    geodatabase::DatasetReplacement replacement(target->workspace(), target->name(), schema);
    if (!fill(replacement)) {
        return false;
    }
    target.reset();
    replacement.publish();
    return true;
}

} // namespace

/// What distinguishes the four site maps: the code, its target and default, and the texts.
struct SiteMapStep {
    const char* code;
    const char* target;
    const char* defaultValue;
    const char* invalidWhere;
    const char* dialogMessage;
    const char* startText;
    const char* closingText;
    const char* failureText;
};

namespace {
const SiteMapStep* siteStep(std::string_view code);
}

EqDataMaps::EqDataMaps()
{
    // No trap of its own: an error of Init reaches the creator as Init raised it.
    context::openStudyRegion(true);
}

EqDataMaps::~EqDataMaps() = default;

const platform::automation::MemberTable* EqDataMaps::members() const
{
    static const platform::automation::MemberTable table = [] {
        platform::automation::MemberTable t("EqDataMaps");
        t.method("ClipHazardDataMaps", &EqDataMaps::ClipHazardDataMaps)
            .method("SyncInvtHft", &EqDataMaps::SyncInvtHft)
            .method("UpdateLineHftforImport", &EqDataMaps::UpdateLineHftforImport)
            .method("UpdatePonitHftforImport", &EqDataMaps::UpdatePonitHftforImport)
            .method("SyncLineHftforImport", &EqDataMaps::SyncLineHftforImport)
            .method("SyncPointHftforImport", &EqDataMaps::SyncPointHftforImport)
            .method("ClipInundationMaps", &EqDataMaps::ClipInundationMaps)
            .method("GenerateThematicMap", &EqDataMaps::GenerateThematicMap)
            .method("MapUserDefinedShakeMap", &EqDataMaps::MapUserDefinedShakeMap);
        return t;
    }();
    return &table;
}

void EqDataMaps::noteFailure(const std::string& failureText, std::exception_ptr error)
{
    m_log.write(DataMapsLog::failureLine(failureText, platform::automation::toAutomationError(error)));
    m_error = true;
}

host::ProgressDialog& EqDataMaps::dialog()
{
    if (!m_dialog) {
        context::throwObjectNotSet("progress dialog");
    }
    return *m_dialog;
}

// ------------------------------------------------------------------ site maps

void EqDataMaps::ClipHazardDataMaps(Variant& vMapType)
{
    context::runTrapped(" ClipHazardDataMaps", Procedure, [&] {
        m_requestedCodes = vMapType;
        m_dialog = host::hostServices().createProgressDialog();
        m_dialog->Show();
        m_dialog->SetTitle("Clipping data maps");
        m_dialog->SetMessage("Initializing");
        m_log.create(region().RegionFolder + "DataMapsLog.txt");
        m_log.stamped("Starting Clipping of User Defined Maps at  : ");

        std::vector<std::string> clipped;
        const auto codes = codesOf(vMapType);
        m_dialog->SetStepCount(codes->count());
        m_boundaryPath = region().RegionBoundaryPath;
        const FeatureClassPtr boundary = openClass("hzboundary", m_boundaryPath);
        const FeatureClassPtr tracts = openClass("hztract", m_boundaryPath);
        for (const Variant& item : *codes) {
            const std::string code = item.toString();
            bool done = false;
            if (code == "SOIL") {
                m_log.blank();
                done = ClipSoilMap(tracts, boundary);
            } else if (code == "LIQF") {
                m_log.blank();
                done = ClipLiquefactionMap(tracts, boundary);
            } else if (code == "LAND") {
                m_log.blank();
                done = ClipLandslideMap(tracts, boundary);
            } else if (code == "WATR") {
                m_log.blank();
                done = ClipWaterDepthMap(tracts, boundary);
            } else {
                continue;
            }
            if (done) {
                clipped.push_back(code);
            }
        }
        m_log.blank();
        m_log.stamped("Finished Clipping of User Defined Maps at  : ");
        m_dialog->Close();

        if (!clipped.empty()) {
            UpdateClippedMapDependencies(clipped);
        }
        m_dialog.reset();
        m_log.close();
        if (m_error) {
            showFailureMessage();
        } else {
            UpdateAnalysisTables(m_requestedCodes);
        }
    });
}

namespace {
const SiteMapStep kSiteSteps[] = {
    {"SOIL", "eqsrsoil", "D", "Type Not in ('A','B','C','D','E')", "Clipping Soil Map",
     "Clipping Soil Map at  : ", "Clipped Soil at  : ", "Clipping for soil failed, error number : "},
    {"LIQF", "eqsrlqf", "0", "Type < 0 or Type > 5", "Clipping Liquefaction Map",
     "Clipping Lqf Map at  : ", "Clipped Lqf at  : ",
     "Clipping for liquefaction failed, error number : "},
    {"LAND", "eqsrlnd", "0", "Type < 0 or Type > 10", "Clipping Landslide Map",
     "Clipping Lnd Map at  : ", "Clipped Lnd at  : ",
     "Clipping for landslide failed, error number : "},
    {"WATR", "eqsrwdepth", "0.0", "Type < 0.0 ", "Clipping WaterDepth Map",
     "Clipping Water Map at  : ", "Clipped Water Map at  : ",
     "Clipping for water failed, error number : "},
};

const SiteMapStep* siteStep(std::string_view code)
{
    for (const auto& step : kSiteSteps) {
        if (code == step.code) {
            return &step;
        }
    }
    return nullptr;
}
} // namespace

bool EqDataMaps::ClipSoilMap(const FeatureClassPtr&, const FeatureClassPtr& boundary)
{
    return clipSiteMap(*siteStep("SOIL"), boundary);
}

bool EqDataMaps::ClipLiquefactionMap(const FeatureClassPtr&, const FeatureClassPtr& boundary)
{
    return clipSiteMap(*siteStep("LIQF"), boundary);
}

bool EqDataMaps::ClipLandslideMap(const FeatureClassPtr&, const FeatureClassPtr& boundary)
{
    return clipSiteMap(*siteStep("LAND"), boundary);
}

bool EqDataMaps::ClipWaterDepthMap(const FeatureClassPtr&, const FeatureClassPtr& boundary)
{
    return clipSiteMap(*siteStep("WATR"), boundary);
}

bool EqDataMaps::clipSiteMap(const SiteMapStep& step, const FeatureClassPtr& boundary)
{
    return logged(step.failureText, [&] {
        dialog().SetMessage(step.dialogMessage);
        m_log.stamped(step.startText);
        const auto registry = host::hostServices().createUserMapRegistry();
        const UserMap map = userMapOf(*registry, step.code);
        if (!map.present()) {
            // No map of the user's: consumers fall back on the region's defaults.
            emptyTarget(step.target, m_boundaryPath, region().SystemDataFolder + "RegionBndry.mdb");
        } else if (!ClipDataMap(map.open(), *boundary, m_boundaryPath, step.target,
                                region().SystemDataFolder, "Type", step.defaultValue,
                                step.invalidWhere)) {
            return false;
        }
        m_log.stamped(step.closingText);
        registry->MarkMapProcessed(step.code);
        dialog().Advance();
        return true;
    });
}

bool EqDataMaps::ClipDataMap(const FeatureClassPtr& source, const geodatabase::FeatureClass& clip,
                             const std::string& targetDatabase, const std::string& targetName,
                             const std::string& systemDataFolder, const std::string& valueField,
                             const std::string& defaultValue, const std::string& invalidWhere)
{
    return logged("Clipping  failed, error number : ", [&] {
        dialog().Advance();
        const std::string templatePath = systemDataFolder + "RegionBndry.mdb";
        if (source->rowCount({}, 1) == 0 || clip.rowCount({}, 1) == 0) {
            emptyTarget(targetName, targetDatabase, templatePath);
            return true;
        }
        if (!source->extent().intersects(clip.extent())) {
            emptyTarget(targetName, targetDatabase, templatePath);
            m_log.write("Map to be Clipped does not overlay with the Region Boundary, default "
                        "Value assumed");
            return true;
        }
        FeatureClassPtr target = targetClass(targetName, targetDatabase, templatePath);
        // The new map is built beside the old one, which stays until the new one is complete.
        const bool clipped = replaceContent(target, *target, [&](auto& replacement) {
            try {
                dialog().Advance();
                geodatabase::Geoprocessor::Clip(*source, clip, replacement.output());
                dialog().Advance();
            } catch (...) {
                return false;
            }
            context::UpdateFieldValue(*replacement.featureClass(), valueField, defaultValue,
                                      invalidWhere);
            return true;
        });
        if (!clipped) {
            // The whole map, unclipped, is better than none; its values are not repaired.
            const FeatureClassPtr templateClass = openClass(targetName, templatePath);
            replaceContent(target, *templateClass, [&](auto& replacement) {
                context::contextGisDataService().CopyFeatures(
                    Variant(source), Variant(replacement.featureClass()), "");
                return true;
            });
        }
        return true;
    });
}

// ------------------------------------------------------------------ inundation maps

void EqDataMaps::ClipInundationMaps(Variant& vMapType)
{
    context::runTrapped(" ClipInundationMaps", Procedure, [&] {
        m_requestedCodes = vMapType;
        m_dialog = host::hostServices().createProgressDialog();
        m_dialog->Show();
        m_error = false;
        m_dialog->SetTitle("Intersecting indunadtion maps");
        m_dialog->SetMessage("Initializing");
        m_log.create(region().RegionFolder + "DataMapsLog1.txt");
        m_log.stamped("Starting Clipping of User Defined Maps at  : ");

        std::vector<std::string> processed;
        const auto codes = codesOf(vMapType);
        m_dialog->SetStepCount(codes->count());
        const FeatureClassPtr tracts = openClass("hztract", region().RegionBoundaryPath);
        static const struct {
            const char* code;
            const char* target;
            const char* mapName;
        } kInundation[] = {{"DAMF", "srdamind", "Dams"},
                           {"TSUN", "srtsuind", "TSunami"},
                           {"SEIC", "srseiind", "Seiche"},
                           {"LEVF", "srlevind", "Levees"}};
        for (const Variant& item : *codes) {
            const std::string code = item.toString();
            for (const auto& entry : kInundation) {
                if (code != entry.code) {
                    continue;
                }
                m_log.blank();
                if (IntersectInundationMap(entry.target, entry.code, entry.mapName, tracts)) {
                    processed.push_back(code);
                }
            }
        }
        m_log.blank();
        m_log.stamped("completed Intersection of Inundation Maps at  : ");
        m_dialog->Close();
        if (m_error) {
            showFailureMessage();
        }
        // The log stays open until the object goes or the next batch starts its own.
        m_dialog.reset();
    });
}

bool EqDataMaps::IntersectInundationMap(const std::string& targetName, const std::string& code,
                                        const std::string& mapName, const FeatureClassPtr& tracts)
{
    return logged("Intersection for soil failed, error number : ", [&] {
        dialog().SetMessage("Clipping Indundation Map for " + mapName);
        m_log.stamped("Intersecting " + mapName + " Map at  : ");
        const auto registry = host::hostServices().createUserMapRegistry();
        const UserMap map = userMapOf(*registry, code);
        const std::string inundationPath = region().RegionFolder + "Inundation.mdb";
        // Without a map of the user's the region keeps what it had.
        if (map.present() &&
            !IntersectDataMap(map.open(), *tracts, inundationPath, targetName,
                              region().SystemDataFolder)) {
            return false;
        }
        m_log.stamped("Clipped at  : ");
        registry->MarkMapProcessed(code);
        dialog().Advance();
        return true;
    });
}

bool EqDataMaps::IntersectDataMap(const FeatureClassPtr& source,
                                  const geodatabase::FeatureClass& tracts,
                                  const std::string& inundationPath, const std::string& targetName,
                                  const std::string& systemDataFolder)
{
    return logged("Intersection  failed, error number : ", [&] {
        dialog().Advance();
        if (source->rowCount({}, 1) == 0 || tracts.rowCount({}, 1) == 0) {
            return false;
        }
        if (!source->extent().intersects(tracts.extent())) {
            m_log.write("Map to be Intersected does not overlay with the Region Boundary");
            return false;
        }
        const std::string templatePath = systemDataFolder + "Inundation.mdb";
        FeatureClassPtr target = targetClass(targetName, inundationPath, templatePath);
        const bool intersected = replaceContent(target, *target, [&](auto& replacement) {
            try {
                dialog().Advance();
                geodatabase::Geoprocessor::Intersect(*source, tracts, replacement.output());
                dialog().Advance();
            } catch (...) {
                return false;
            }
            return true;
        });
        if (!intersected) {
            // An empty target of the right shape rather than a broken one.
            const FeatureClassPtr templateClass = openClass(targetName, templatePath);
            replaceContent(target, *templateClass, [](auto&) { return true; });
        }
        return intersected;
    });
}

// ------------------------------------------------------------------ drawing

void EqDataMaps::GenerateThematicMap(const std::string& MapType,
                                     std::optional<int16_t>& ThmMapType,
                                     std::optional<double>& dMInVal,
                                     std::optional<double>& dMaxVal)
{
    context::runTrapped(" GenerateThematicMap", Procedure, [&] {
        int16_t type = ThmMapType.value_or(0);
        double minimum = dMInVal.value_or(0.0);
        double maximum = dMaxVal.value_or(0.0);
        std::string table;
        std::string database;
        std::string field = "type";
        const std::string regionBoundary = region().RegionFolder + "RegionBndry.mdb";
        const std::string inundation = region().RegionFolder + "Inundation.mdb";
        static const struct {
            const char* code;
            const char* table;
            bool inundation;
            int16_t type;
        } kDrawn[] = {{"SOIL", "eqsrsoil", false, 8},  {"LIQF", "eqsrlqf", false, 12},
                      {"LAND", "eqsrlnd", false, 10},  {"WATR", "eqsrwdepth", false, 2},
                      {"DAMF", "srdamind", true, 14},  {"TSUN", "srtsuind", true, 15},
                      {"SEIC", "srseiind", true, 16},  {"LEVF", "srlevind", true, 17}};
        static const char* const kGroundMotion[] = {"PGVM", "PGAM", "SA03", "SA10",
                                                    "STGD", "LSGD", "LFPR", "LDGD",
                                                    "LDPR", "SRGD", "SRPR"};
        for (const auto& entry : kDrawn) {
            if (MapType == entry.code) {
                table = entry.table;
                database = entry.inundation ? inundation : regionBoundary;
                type = entry.type;
                if (MapType == "WATR") {
                    context::contextGisDataService().GetFieldRange("RegionBndry.mdb", "eqsrwdepth",
                                                                   "type", minimum, maximum);
                }
            }
        }
        for (const char* code : kGroundMotion) {
            if (MapType != code) {
                continue;
            }
            const auto registry = host::hostServices().createUserMapRegistry();
            const UserMap map = userMapOf(*registry, code);
            if (!map.present()) {
                return;
            }
            table = map.className;
            database = map.folder + map.fileName;
            field = "paramvalue";
        }
        ThmMapType = type;
        dMInVal = minimum;
        dMaxVal = maximum;
        // Only a type of 0 is refused: an unknown code with a type of the caller's goes on to
        // the builder and fails there under the builder's tags.
        if (type == 0) {
            throw context::recordError(" GenerateThematicMap , invalid thematic Mapping type",
                                       Procedure,
                                       std::make_exception_ptr(AutomationError(
                                           platform::automation::ErrorNumber::InvalidProcedureCall,
                                           "Brevant", "Invalid procedure call or argument")));
        }
        thematic::CreateThematicMap(table, database, type, field, minimum, maximum, false, true,
                                    "");
        dMInVal = minimum;
        dMaxVal = maximum;
    });
}

void EqDataMaps::MapUserDefinedShakeMap(const std::string& MDBNameWithPath,
                                        const std::string& TableName, const std::string& MapName)
{
    context::runTrapped(" for water map", MapLayer, [&] {
        double minimum = 0.0;
        double maximum = 0.0;
        context::contextGisDataService().GetFieldRange(MDBNameWithPath, TableName, "ParamValue",
                                                       minimum, maximum);
        thematic::CreateThematicMap(TableName, MDBNameWithPath, 2, "ParamValue", minimum, maximum,
                                    false, true, "Shake Map for " + MapName);
    });
}

} // namespace brevant::datamaps
