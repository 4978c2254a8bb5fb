// What the map selection window selects, how an epicentre is placed, and what Selection Done
// and Back hand back.

#include "context/StudyRegionContext.h"
#include "host/RegionContextService.h"
#include "host/RegionSelectionStore.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/Map.h"
#include "platform/display/widgets/MapWidget.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/QueryFilter.h"
#include "platform/tabular/Recordset.h"
#include "platform/ui/UserPrompts.h"
#include "selection/FormEvents.h"
#include "selection/frmMapSelDlg.h"

#include <QPushButton>
#include <cmath>
#include <cstdlib>
#include <map>
#include <stdexcept>

namespace brevant::selection {

namespace carto = platform::carto;
namespace geometry = platform::geometry;
namespace gdb = platform::geodatabase;

namespace {

/// How far a click may lie from an epicentre or fault and still pick it, in degrees.
constexpr double kPickReach = 0.03;
/// How far an epicentre may be placed from its fault, in screen pixels.
constexpr int kFaultPixels = 9;
/// Most codes one condition of the current selection carries: sent once it holds over 1000.
constexpr int kSelectionBatch = 1001;

geometry::Geometry boxOf(const geometry::Envelope& box)
{
    return geometry::Geometry::polygon({{{box.xmin(), box.ymin()},
                                         {box.xmax(), box.ymin()},
                                         {box.xmax(), box.ymax()},
                                         {box.xmin(), box.ymax()},
                                         {box.xmin(), box.ymin()}}});
}

bool hasArea(const geometry::Envelope& band)
{
    return band.width() != 0.0 && band.height() != 0.0;
}

std::string quoted(const std::string& text)
{
    return "'" + text + "'";
}

} // namespace

void frmMapSelDlg::SelectFeaturesMouseUp(const platform::display::MapMouseEvent& event,
                                         const std::optional<geometry::Envelope>& band)
{
    handler(" updating user selection from map", [&] {
        redrawSelection();
        carto::SelectionEnvironment environment = m_pMap->selectionEnvironment();
        if (m_iDlgType == 0) {
            environment.combinationMethod = (event.modifiers & Qt::ShiftModifier)
                                                ? carto::SelectionResult::Xor
                                                : carto::SelectionResult::New;
        }
        const bool epicentre = m_iDlgType == 3 || m_iDlgType == 4;
        const bool pick = m_iDlgType == 1 || m_iDlgType == 2;
        if (!band) {
            if (epicentre) {
                MakeEpicenterSelection();
                m_pActiveView->refresh();
            } else if (pick) {
                MakeFaultSelection();
                UpdateSelectionButtons();
            } else {
                m_pMap->selectByShape(geometry::Geometry::point(pUserPoint), &environment);
                UpdateSelectionButtons();
            }
        } else if (hasArea(*band)) {
            if (epicentre) {
                MakeEpicenterSelection();
                m_pActiveView->refresh();
            } else if (pick) {
                m_pMap->selectByShape(geometry::Geometry::point(pUserPoint));
                UpdateSelectionButtons();
            } else {
                // A box is a new selection whatever the keys held.
                m_pMap->selectByShape(boxOf(*band));
                UpdateSelectionButtons();
            }
        }
        redrawSelection();
    });
}

void frmMapSelDlg::MakeFaultSelection()
{
    handler(" making fault selection", [&] {
        const geometry::Geometry click = geometry::Geometry::point(pUserPoint);
        const geometry::Geometry reach = click.buffer(kPickReach);
        m_pFeatureLayer->selectFeatures(gdb::QueryFilter::spatial(reach),
                                        carto::SelectionResult::New);
        const auto& selected = m_pFeatureLayer->selectionSet();
        if (selected.isEmpty()) {
            cmdSelectionDone->setEnabled(false);
            return;
        }
        struct Candidate {
            double distance;
            std::string identifier;
            geometry::ShapeType type;
        };
        std::map<int64_t, Candidate> candidates;
        m_pFeatureLayer->search(gdb::QueryFilter::spatial(reach), [&](const gdb::Row& row) {
            if (selected.contains(row.oid())) {
                candidates[row.oid()] = {row.shape().distance(click), row.value(2).toString(),
                                         row.shape().type()};
            }
            return true;
        });
        // Far beyond the reach, so the first feature visited always counts.
        double nearest = 8.0;
        const Candidate* chosen = nullptr;
        for (const int64_t oid : selected.ids()) {
            const auto found = candidates.find(oid);
            if (found != candidates.end() && found->second.distance < nearest) {
                nearest = found->second.distance;
                chosen = &found->second;
            }
        }
        if (chosen == nullptr) {
            cmdSelectionDone->setEnabled(false);
            return;
        }
        const std::string keyField =
            chosen->type == geometry::ShapeType::Point ? "eqEpicenterId" : "eqFaultId";
        m_pFeatureLayer->selectFeatures(
            gdb::QueryFilter::spatial(reach, keyField + " = " + quoted(chosen->identifier)),
            carto::SelectionResult::New);
        cmdSelectionDone->setEnabled(true);
    });
}

void frmMapSelDlg::MakeEpicenterSelection()
{
    handler(" making epicenter selection", [&] {
        if (m_pEpicFeatureClass->rowCount({}, 1) > 0) {
            m_pEpicFeatureClass->deleteSearchedRows();
        }
        if (m_iDlgType == 3) {
            const auto reject = [&] {
                platform::ui::userPrompts().messageBox(
                    "Defined epicenter does not lie within the fault area", "KORVAL",
                    platform::ui::MessageButtons::Ok);
                cmdSelectionDone->setEnabled(false);
            };
            // A fault identifier that matched nothing leaves no fault area to lie in.
            if (!m_pFaultCurve) {
                return reject();
            }
            const geometry::Point onFault = m_pFaultCurve->nearestPoint(pUserPoint);
            const auto& transformation = m_pActiveView->displayTransformation();
            const auto pixel = [&](const geometry::Point& p) {
                const auto device = transformation.fromMapPoint(p);
                return std::pair<long, long>(std::lround(device.x), std::lround(device.y));
            };
            const auto [clickX, clickY] = pixel(pUserPoint);
            const auto [faultX, faultY] = pixel(onFault);
            if (std::labs(clickX - faultX) > kFaultPixels ||
                std::labs(clickY - faultY) > kFaultPixels) {
                return reject();
            }
            pUserPoint = onFault;
        }
        gdb::Row epicentre = m_pEpicFeatureClass->createRow();
        epicentre.setShape(geometry::Geometry::point(pUserPoint));
        auto cursor = m_pEpicFeatureClass->insert();
        cursor.insertRow(epicentre);
        cursor.flush();
        cmdSelectionDone->setEnabled(true);
    });
}

void frmMapSelDlg::UpdateSelectionButtons()
{
    handler(" updating selection buttons",
            [&] { cmdSelectionDone->setEnabled(!m_pFeatureLayer->selectionSet().isEmpty()); });
}

void frmMapSelDlg::SelectAll()
{
    m_pFeatureLayer->selectFeatures({}, carto::SelectionResult::New);
    redrawSelection();
    cmdSelectionDone->setEnabled(true);
}

void frmMapSelDlg::DeselectAll()
{
    redrawSelection();
    m_pMap->clearSelection();
    redrawSelection();
    cmdSelectionDone->setEnabled(false);
}

void frmMapSelDlg::SwitchSelection()
{
    const carto::SelectionSet kept = m_pFeatureLayer->selectionSet();
    m_pFeatureLayer->selectFeatures({}, carto::SelectionResult::New);
    redrawSelection();
    m_pFeatureLayer->selectionSet().combine(kept, carto::SelectionResult::Xor);
    redrawSelection();
    UpdateSelectionButtons();
}

void frmMapSelDlg::ApplyCurrentSelection()
{
    handler(" applying selection", [&] {
        static const char* const heads[] = {"StateFips In (", "CountyFips In (", "Tract In (",
                                            "CensusBlock In ("};
        if (m_iSelType < 0 || m_iSelType > 3) {
            throw std::out_of_range("unit level " + std::to_string(m_iSelType) +
                                    " is none of 0 to 3");
        }
        const std::string head = heads[m_iSelType];
        auto units = context::studyRegionContext()
                         .RegionSelectionStore->GetRegionUnits(m_iSelType)
                         .objectAs<platform::tabular::Recordset>();
        const int32_t count = units->recordCount();
        if (count < 1) {
            return;
        }
        const int32_t codeColumn = m_iSelType == 0 ? 1 : 0;
        units->moveFirst();
        std::string codes;
        int inBatch = 0;
        for (int32_t i = 0; i < count; ++i) {
            codes += (inBatch > 0 ? "," : "") + quoted(units->value(codeColumn).toString());
            ++inBatch;
            const bool last = i + 1 == count;
            if (inBatch >= kSelectionBatch || last) {
                m_pFeatureLayer->selectFeatures(gdb::QueryFilter::where(head + codes + ")"),
                                                carto::SelectionResult::Add);
                codes.clear();
                inBatch = 0;
            }
            if (!last) {
                units->moveNext();
            }
        }
        units->close();
        m_pFeatureLayer->setVisible(true);
        m_pActiveView->partialRefresh(carto::ViewPhase::Geography);
    });
}

void frmMapSelDlg::UpdateUserSelectionFromMap()
{
    handler(" updating user selection from map", [&] {
        const auto ids = m_pFeatureLayer->selectionSet().ids();
        if (ids.empty()) {
            return;
        }
        const auto& ctx = context::studyRegionContext();
        auto units = ctx.RegionSelectionStore->OpenRegionUnits(m_iSelType, true)
                         .objectAs<platform::tabular::Recordset>();
        const int codeField = m_iSelType + 2;
        for (const int64_t oid : ids) {
            const auto feature = m_pFeatureClass->row(oid);
            if (!feature) {
                throw std::runtime_error("selected feature " + std::to_string(oid) +
                                         " is no longer in " + m_pFeatureClass->name());
            }
            const std::string code = feature->value(codeField).toString();
            units->addNew();
            switch (m_iSelType) {
            case 0:
                units->setValue(0, ctx.RegionContextService->LookupState(code));
                units->setValue(1, code);
                break;
            case 1:
                units->setValue(0, code);
                units->setValue(1, ctx.RegionContextService->LookupState(code.substr(0, 2)));
                break;
            case 2:
                units->setValue(0, code);
                units->setValue(1, code.substr(0, 5));
                break;
            default:
                units->setValue(0, code);
                units->setValue(1, code.substr(0, 11));
                break;
            }
        }
        units->setMarshalOptions(platform::tabular::Recordset::MarshalOptions::ModifiedOnly);
        ctx.RegionSelectionStore->SaveRegionUnits(platform::automation::Variant(units));
        units->close();
    });
}

void frmMapSelDlg::UpdateFaultSelection()
{
    handler(" updating fault selection", [&] {
        const auto& ids = m_pFeatureLayer->selectionSet().ids();
        if (ids.empty()) {
            return;
        }
        const auto feature = m_pFeatureClass->row(ids.front());
        if (feature) {
            m_sFaultId = feature->value(2).toString();
        }
    });
}

void frmMapSelDlg::cmdSelectionDone_Click()
{
    handler(" saving selection", [&] {
        if (m_iDlgType == 0) {
            UpdateUserSelectionFromMap();
        } else if (m_iDlgType == 1 || m_iDlgType == 2) {
            UpdateFaultSelection();
        } else {
            // The stored point, not the last click: a zoom after the definition moves neither.
            auto cursor = m_pEpicFeatureClass->search();
            const auto stored = cursor.next();
            if (!stored) {
                throw std::runtime_error("no epicenter has been defined");
            }
            const geometry::Point at = stored->shape().firstPoint();
            m_dLong = at.x;
            m_dLat = at.y;
        }
        m_bSelection = true;
        accept();
    });
}

void frmMapSelDlg::cmdBack_Click()
{
    handler(" canceling the map selection", [&] {
        m_bSelection = false;
        reject();
    });
}

} // namespace brevant::selection
