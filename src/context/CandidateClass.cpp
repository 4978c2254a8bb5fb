#include "context/CandidateClass.h"

#include "platform/automation/AutomationError.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/Variant.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"

namespace brevant::context {

namespace geodatabase = platform::geodatabase;
using platform::automation::Variant;

std::shared_ptr<geodatabase::FeatureClass> OpenCandidateClass(const std::string& databasePath,
                                                              const std::string& className)
{
    const auto workspace = geodatabase::Workspace::open(databasePath, true);
    if (workspace.kind() != geodatabase::Workspace::Kind::GeoPackage &&
        workspace.kind() != geodatabase::Workspace::Kind::Access) {
        throw platform::automation::AutomationError(
            platform::automation::ErrorNumber::FileNotFound, "Brevant",
            databasePath + " is not a personal geodatabase");
    }
    return workspace.openFeatureClass(className);
}

Variant CandidateFeatureCount(const geodatabase::FeatureClass& featureClass)
{
    return Variant(Variant(static_cast<double>(featureClass.rowCount())).toInt32());
}

void CheckCandidateClass(const std::string& MDBName, const std::string& TableName,
                         const std::string& MDBPath, Variant& NRecs, int16_t& IsGeoDB,
                         platform::geometry::ShapeType wanted)
{
    IsGeoDB = CandidateResult::NotOpened;
    runQuietly([&] {
        const auto featureClass = OpenCandidateClass(MDBPath + MDBName, TableName);
        IsGeoDB = CandidateResult::Valid;
        if (featureClass->shapeType() == wanted) {
            NRecs = CandidateFeatureCount(*featureClass);
        } else {
            IsGeoDB = CandidateResult::WrongShapeType;
        }
    });
}

} // namespace brevant::context
