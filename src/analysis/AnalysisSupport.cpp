#include "analysis/AnalysisSupport.h"

#include "context/ContextObjects.h"
#include "context/EqUtilFunctions.h"
#include "context/StudyRegionContext.h"
#include "host/GisDataService.h"
#include "host/GisUtilityService.h"
#include "host/HostServices.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/Variant.h"
#include "platform/geodatabase/FeatureClass.h"

namespace brevant::analysis::detail {

namespace geodatabase = platform::geodatabase;

std::shared_ptr<geodatabase::FeatureClass> openClassAt(const std::string& className,
                                                       const std::string& databasePath)
{
    auto featureClass = context::contextGisDataService()
                            .OpenFeatureClass(className, databasePath)
                            .objectAs<geodatabase::FeatureClass>();
    if (!featureClass) {
        context::throwObjectNotSet("feature class");
    }
    return featureClass;
}

std::shared_ptr<geodatabase::FeatureClass> openRegionClass(const std::string& className,
                                                           const std::string& databaseName)
{
    return openClassAt(className, context::studyRegionContext().RegionFolder + databaseName);
}

std::string lineHazardTableName(std::string_view lineClass)
{
    // A name of two characters or fewer has nothing after its prefix.
    const std::string_view suffix = lineClass.size() > 2 ? lineClass.substr(2) : "";
    return "Eq" + std::string(suffix) + "hft";
}

bool isTractTable(std::string_view tableName)
{
    return platform::automation::equalsIgnoreCase(tableName, "eqTract");
}

void addZeroedResultField(geodatabase::FeatureClass& featureClass, const std::string& fieldName)
{
    if (featureClass.findField(fieldName) < 0) {
        featureClass.addField({fieldName, geodatabase::FieldType::Double, 0, fieldName});
    }
    context::UpdateFieldValue(featureClass, fieldName, "0.0", "");
}

void handOffAnalysisTable(const std::string& tableName, const std::string& databaseName,
                          const platform::automation::Variant& mapTypes, bool isPoint)
{
    host::hostServices().createGisUtilityService()->UpdateAnalysisTable(tableName, databaseName,
                                                                        mapTypes, isPoint);
}

} // namespace brevant::analysis::detail
