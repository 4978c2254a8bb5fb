#include "selection/EQMapSelDlg.h"

#include "context/EqShape.h"
#include "context/ErrorTrap.h"
#include "context/StudyRegionContext.h"
#include "host/GisDataService.h"
#include "host/HostServices.h"
#include "host/RegionSelectionStore.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/Map.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/QueryFilter.h"
#include "platform/geodatabase/Table.h"
#include "platform/tabular/Recordset.h"
#include "platform/ui/qt/ModalWindow.h"
#include "selection/frmFl.h"
#include "selection/frmMapSelDlg.h"

#include <stdexcept>

namespace brevant::selection {

namespace {

using platform::automation::Variant;

/// Most codes one condition carries: a batch is sent once it holds more than 2000.
constexpr std::size_t kBatchCodes = 2001;

/// Sends `source`'s features whose key is among the codes of `units` (column `codeColumn`) to
/// `target`, through the host's copy, in batches of at most 2001 codes. While `keepCurSel` is
/// given and false, a unit with a column-2 flag other than 0 sets it.
void copyUnitFeatures(const Variant& source, const Variant& target, const std::string& head,
                      platform::tabular::Recordset& units, int32_t codeColumn, bool* keepCurSel)
{
    auto& gis = *context::studyRegionContext().GisDataService;
    const int32_t count = units.recordCount();
    // An empty level has no first record: that fails here as it always has.
    units.moveFirst();
    std::string codes;
    std::size_t inBatch = 0;
    for (int32_t i = 0; i < count; ++i) {
        if (inBatch > 0) {
            codes += ",";
        }
        codes += "'" + units.value(codeColumn).toString() + "'";
        ++inBatch;
        if (keepCurSel != nullptr && !*keepCurSel) {
            const Variant flag = units.value(2);
            if (!flag.isNull() && !flag.isEmpty() && flag.toDouble() != 0) {
                *keepCurSel = true;
            }
        }
        const bool last = i + 1 == count;
        if (inBatch >= kBatchCodes || last) {
            gis.CopyFeatures(source, target, head + codes + ")");
            codes.clear();
            inBatch = 0;
        }
        if (!last) {
            units.moveNext();
        }
    }
}

} // namespace

EQMapSelDlg::EQMapSelDlg()
{
    context::runTrapped(" EQMapSelDlg", platform::automation::LibraryCode::ClassInit,
                        [] { context::openStudyRegion(false); });
}

EQMapSelDlg::~EQMapSelDlg() = default;

frmMapSelDlg& EQMapSelDlg::PrepareForm()
{
    platform::ui::qt::ensureWidgetApplication();
    m_frmMapSel = std::make_unique<frmMapSelDlg>();
    m_map = std::make_shared<platform::carto::Map>();
    m_frmMapSel->m_pMap = m_map;
    m_frmMapSel->m_pActiveView = &m_map->activeView();
    return *m_frmMapSel;
}

void EQMapSelDlg::ShowUnitDialog(const char* tag, int16_t level)
{
    context::runLogged(tag, platform::automation::LibraryCode::Procedure, [&] {
        PrepareForm().m_iDlgType = 0;
        ShowDlgWithSelection(level);
    });
}

void EQMapSelDlg::SelStateDlg()
{
    ShowUnitDialog(" SelStateDlg", 0);
}

void EQMapSelDlg::SelCountyDlg()
{
    ShowUnitDialog(" SelCountyDlg", 1);
}

void EQMapSelDlg::SelTractDlg()
{
    ShowUnitDialog(" SelTractDlg", 2);
}

void EQMapSelDlg::SelBlockDlg()
{
    ShowUnitDialog(" SelBlockDlg", 3);
}

void EQMapSelDlg::ShowDlgWithSelection(int16_t level)
{
    context::runLogged(" ShowDlgWithSelection", platform::automation::LibraryCode::Procedure, [&] {
        static const char* const captions[] = {
            "Please Select State(s) where region is located",
            "Please Select County or Counties where region is located",
            "Please Select Tract(s) where region is located",
            "Please Select Cenus Block(s) where region is located"};
        auto& form = *m_frmMapSel;
        OpenLevelClass(level);
        form.m_DlgCaption = captions[level];
        Variant candidates = m_vLevelClass;
        if (level > 0) {
            candidates = Variant();
            GetSelLayer(level, candidates);
        }
        auto featureClass = candidates.objectAs<platform::geodatabase::FeatureClass>();
        auto layer = std::make_shared<platform::carto::FeatureLayer>(featureClass);
        layer->setName("RegionSelection");
        form.m_pFeatureClass = featureClass;
        form.m_pFeatureLayer = layer;
        form.m_bCurSel = m_bKeepCurSel || level == 0;
        form.m_iSelType = level;
        form.m_iDlgType = 0;
        form.showModal();
        m_bKeepCurSel = !form.m_bSelection;
    });
}

void EQMapSelDlg::ShowHazardDialog(HazardDialog& dialog)
{
    auto& form = *m_frmMapSel;
    form.m_pSrFeatureLayer = dialog.boundaryLayer;
    form.m_DlgCaption = dialog.caption;
    form.m_iDlgType = dialog.dlgType;
    if (dialog.epicLayer) {
        form.m_pEpicLayer = dialog.epicLayer;
        form.m_pEpicFeatureClass = dialog.epicLayer->featureClass();
    }
    form.m_pFeatureClass = dialog.layer->featureClass();
    form.m_pFeatureLayer = dialog.layer;
    form.m_bCurSel = false;
    form.showModal();
    m_bKeepCurSel = !form.m_bSelection;
}

namespace {

/// Lets go of what a hazard dialog was given, so no class stays open through the form.
void releaseHazardDialog(frmMapSelDlg& form, EQMapSelDlg::HazardDialog& dialog)
{
    form.m_pSrFeatureLayer.reset();
    if (form.m_pFeatureLayer) {
        form.m_pFeatureLayer->setFeatureClass(nullptr);
    }
    form.m_pFeatureLayer.reset();
    form.m_pFeatureClass.reset();
    form.m_pEpicFeatureClass.reset();
    form.m_pEpicLayer.reset();
    dialog = {};
}

} // namespace

void EQMapSelDlg::PickHazardFeature(const char* tag, int16_t dlgType, std::string& identifier)
{
    context::runLogged(tag, platform::automation::LibraryCode::Procedure, [&] {
        auto& form = PrepareForm();
        auto dialog = PrepareHazardSelection(dlgType, identifier);
        ShowHazardDialog(dialog);
        identifier = form.m_sFaultId;
        releaseHazardDialog(form, dialog);
        m_frmMapSel.reset();
    });
}

void EQMapSelDlg::SelHistoricalEpicenter(std::string& sEpicenterId)
{
    PickHazardFeature(" SelHistoricalEpicenter", 1, sEpicenterId);
}

void EQMapSelDlg::SelFault(std::string& sFault)
{
    PickHazardFeature(" SelFault", 2, sFault);
}

void EQMapSelDlg::DefineEpicenter(const std::string& sScenType, const std::string& sSelFltId,
                                  double& dLong, double& dLat)
{
    context::runLogged(" DefineEpicenter", platform::automation::LibraryCode::Procedure, [&] {
        auto& form = PrepareForm();
        auto dialog = PrepareEpicenterDefinition(sScenType, sSelFltId);
        ShowHazardDialog(dialog);
        dLong = form.m_dLong;
        dLat = form.m_dLat;
        releaseHazardDialog(form, dialog);
        m_frmMapSel.reset();
    });
}

void EQMapSelDlg::GetflStudyCaseId(int16_t& StudyCaseId)
{
    // The host is told of a failure by the error log only, as with every selection method.
    context::runLogged(" GetflStudyCaseId", platform::automation::LibraryCode::Procedure, [&] {
        StudyCaseId = 0;
        platform::ui::qt::ensureWidgetApplication();
        auto& form = frmFl::instance();
        form.showModal();
        StudyCaseId = form.m_StudyCaseId;
    });
}

void EQMapSelDlg::CreateBlockData(const platform::automation::Variant& bFirstCD,
                                  const std::string& sCDPathWithState)
{
    context::runLogged(" CreateBlockData", platform::automation::LibraryCode::Procedure, [&] {
        const auto& ctx = context::studyRegionContext();
        Variant source;
        Variant target;
        context::OpenMap("hzCensusBlock", sCDPathWithState + "bndrygbs.mdb", source);
        context::OpenMap("hzCensusBlock", ctx.SystemDataFolder + "temp.mdb", target);
        if (bFirstCD.toBool()) {
            target.objectAs<platform::geodatabase::Table>()->deleteSearchedRows();
        }
        // A store of its own, as the host hands out a fresh view of the units.
        auto store = host::hostServices().createRegionSelectionStore();
        auto counties = store->GetRegionUnits(1).objectAs<platform::tabular::Recordset>();
        copyUnitFeatures(source, target, "Left(Tract,5) In (", *counties, 0, nullptr);
        counties->close();
    });
}

void EQMapSelDlg::OpenLevelClass(int16_t level)
{
    const auto& ctx = context::studyRegionContext();
    static const char* const classes[] = {"syState", "syCounty", "sytract", "hzCensusBlock"};
    if (level < 0 || level > 3) {
        throw std::out_of_range("unit level " + std::to_string(level) + " is none of 0 to 3");
    }
    m_sDBName =
        level == 3 ? ctx.SystemDataFolder + "temp.mdb" : ctx.StateDataFolder + "syboundary.mdb";
    context::OpenMap(classes[level], m_sDBName, m_vLevelClass);
}

void EQMapSelDlg::GetSelLayer(int16_t level, platform::automation::Variant& result)
{
    context::runLogged(" GetSelLayer", platform::automation::LibraryCode::Procedure, [&] {
        const auto& ctx = context::studyRegionContext();
        context::OpenMap("RegionSelection", ctx.SystemDataFolder + "temp.mdb", result);
        result.objectAs<platform::geodatabase::Table>()->deleteSearchedRows();
        std::string head;
        if (level == 1) {
            head = "StateFips In (";
        } else if (level == 2) {
            head = "CountyFips In (";
        } else if (level == 3) {
            head = "Tract In (";
        }
        auto parents = ctx.RegionSelectionStore->GetRegionUnits(static_cast<int16_t>(level - 1))
                           .objectAs<platform::tabular::Recordset>();
        // A state record carries its code in column 1; the other levels in column 0.
        copyUnitFeatures(m_vLevelClass, result, head, *parents, level == 1 ? 1 : 0, &m_bKeepCurSel);
        parents->close();
    });
}

namespace {

std::shared_ptr<platform::carto::FeatureLayer> layerOf(const Variant& featureClass)
{
    return std::make_shared<platform::carto::FeatureLayer>(
        featureClass.objectAs<platform::geodatabase::FeatureClass>());
}

std::shared_ptr<platform::carto::FeatureLayer> boundaryLayer()
{
    auto layer = layerOf(context::studyRegionContext().GisDataService->GetBoundaryClass(0, 0, ""));
    layer->setName("Region Boundary");
    return layer;
}

void selectIdentifier(platform::carto::FeatureLayer& layer, const std::string& keyField,
                      const std::string& identifier)
{
    // Quoted as it comes: an identifier is a code of the scenario database, not user text.
    layer.selectFeatures(
        platform::geodatabase::QueryFilter::where(keyField + " = " + "'" + identifier + "'"),
        platform::carto::SelectionResult::New);
}

} // namespace

EQMapSelDlg::HazardDialog EQMapSelDlg::PrepareHazardSelection(int16_t dlgType,
                                                              const std::string& identifier)
{
    if (dlgType != 1 && dlgType != 2) {
        throw std::out_of_range("hazard selection kind " + std::to_string(dlgType) +
                                " is neither 1 nor 2");
    }
    const auto& ctx = context::studyRegionContext();
    HazardDialog dialog;
    dialog.dlgType = dlgType;
    dialog.boundaryLayer = boundaryLayer();
    const bool epicentre = dlgType == 1;
    dialog.caption =
        epicentre ? "Please Select Historical Epicenter" : "Please Select Source Fault";
    dialog.layer = layerOf(ctx.GisDataService->OpenFeatureClass(
        epicentre ? "eqEpicenter" : "eqFault", ctx.ScenarioFolder + "SCENARIO.mdb"));
    selectIdentifier(*dialog.layer, epicentre ? "eqEpicenterId" : "eqFaultId", identifier);
    return dialog;
}

EQMapSelDlg::HazardDialog EQMapSelDlg::PrepareEpicenterDefinition(const std::string& sScenType,
                                                                  const std::string& sSelFltId)
{
    const auto& ctx = context::studyRegionContext();
    HazardDialog dialog;
    dialog.boundaryLayer = boundaryLayer();
    const Variant points =
        ctx.GisDataService->OpenFeatureClass("HazardSelection", ctx.SystemDataFolder + "temp.mdb");
    auto pointClass = points.objectAs<platform::geodatabase::FeatureClass>();
    if (pointClass->rowCount({}, 1) > 0) {
        pointClass->deleteSearchedRows();
    }
    dialog.epicLayer = layerOf(points);
    dialog.layer = layerOf(
        ctx.GisDataService->OpenFeatureClass("eqFault", ctx.ScenarioFolder + "SCENARIO.mdb"));
    if (sScenType == "S") {
        dialog.caption = "Please define epicenter for the selected source fault";
        dialog.dlgType = 3;
        selectIdentifier(*dialog.layer, "eqFaultId", sSelFltId);
    } else {
        dialog.caption = "Please define epicenter for arbitrary event";
        dialog.dlgType = 4;
    }
    return dialog;
}

const platform::automation::MemberTable* EQMapSelDlg::members() const
{
    static const platform::automation::MemberTable table = [] {
        platform::automation::MemberTable t("EQMapSelDlg");
        t.method("SelStateDlg", &EQMapSelDlg::SelStateDlg)
            .method("SelCountyDlg", &EQMapSelDlg::SelCountyDlg)
            .method("SelTractDlg", &EQMapSelDlg::SelTractDlg)
            .method("SelBlockDlg", &EQMapSelDlg::SelBlockDlg)
            .method("SelHistoricalEpicenter", &EQMapSelDlg::SelHistoricalEpicenter)
            .method("SelFault", &EQMapSelDlg::SelFault)
            .method("DefineEpicenter", &EQMapSelDlg::DefineEpicenter)
            .method("CreateBlockData", &EQMapSelDlg::CreateBlockData)
            .method("GetflStudyCaseId", &EQMapSelDlg::GetflStudyCaseId);
        return t;
    }();
    return &table;
}

} // namespace brevant::selection
