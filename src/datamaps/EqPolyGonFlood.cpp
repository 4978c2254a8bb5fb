// EqPolyGon: the maps of outside programs, plume footprints and the flood view.

#include "context/ContextObjects.h"
#include "context/EqSimpleRenderer.h"
#include "context/EqUtilFunctions.h"
#include "context/ErrorTrap.h"
#include "context/StudyRegionContext.h"
#include "datamaps/EqPolyGon.h"
#include "host/GisDataService.h"
#include "host/HostServices.h"
#include "host/RegionContextService.h"
#include "host/RegionSettingsStore.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/Map.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/ui/UserPrompts.h"

#include <filesystem>
#include <optional>

namespace brevant::datamaps {

namespace geodatabase = platform::geodatabase;
using platform::automation::LibraryCode::MapLayer;

namespace {

constexpr std::string_view kMarplotLayer = "Marplot foot print";
constexpr std::string_view kFloodViewLayer = "Flood view print";
constexpr std::string_view kNotAssigned = "NONE_";
constexpr std::string_view kTitle = "KORVAL";

void tell(const std::string& text)
{
    platform::ui::userPrompts().messageBox(text, std::string(kTitle),
                                           platform::ui::MessageButtons::Ok);
}

/// A visible, selectable layer named `name` over `featureClass`, drawn by the symbol factory,
/// on top of CurrentMap.
void addOutsideLayer(std::shared_ptr<geodatabase::FeatureClass> featureClass,
                     std::string_view name)
{
    auto& map = context::currentMapOrFail();
    auto layer = std::make_shared<platform::carto::FeatureLayer>();
    layer->setFeatureClass(std::move(featureClass));
    layer->setVisible(true);
    layer->setName(std::string(name));
    context::CreateRendrer(*layer, layer->name());
    map.addLayer(layer);
    layer->setSelectable(true);
}

/// The flood-view shapefile the user picks in the host's file dialog; nullopt when cancelled.
std::optional<std::string> askForFloodView(host::RegionSettingsStore& settings)
{
    tell("Flood view output file (shape) is not assigned, please select your file.");
    const std::string folder = settings.ReadString("General", "FLDVIEWPATH");
    const auto context = host::hostServices().createRegionContextService();
    while (true) {
        int32_t result = 0;
        std::string path;
        context->ShowFileDialog(folder, "", "shp", result, path);
        if (result == 1) {
            if (!std::filesystem::exists(path)) {
                tell("File Does not exits");
                continue;
            }
            settings.WriteString("General", "FLOODVIEWFILE", path);
            return path;
        }
        if (result == -1) {
            tell("InValid selection. ");
            continue;
        }
        if (result == 0) {
            return std::nullopt;
        }
    }
}

} // namespace

void EqPolyGon::MapMarPlotFootPrint()
{
    context::runTrapped(" for census tract ", MapLayer, [] {
        context::RemoveLayer(std::string(kMarplotLayer));
        addOutsideLayer(
            context::openFeatureClass("MarPlot",
                                      context::studyRegionContext().RegionFolder + "3rdParty.mdb"),
            kMarplotLayer);
    });
}

void EqPolyGon::MapFloodView()
{
    context::runTrapped(" for flood view ", MapLayer, [] {
        auto& settings = context::contextSettingsStore();
        std::string file = settings.ReadString("General", "FLOODVIEWFILE");
        if (file == kNotAssigned) {
            const auto chosen = askForFloodView(settings);
            if (!chosen) {
                return;
            }
            file = *chosen;
        }
        // The host names a shapefile by its folder, ending in "\", and its name.
        const std::filesystem::path path(file);
        const std::string folder = path.parent_path().string() + "\\";
        const auto shapes = context::contextGisDataService()
                                .OpenShapefile(path.filename().string(), folder)
                                .objectAs<geodatabase::FeatureClass>();
        if (!shapes) {
            context::throwObjectNotSet("flood view shapefile");
        }
        addOutsideLayer(shapes, kFloodViewLayer);
    });
}

} // namespace brevant::datamaps
