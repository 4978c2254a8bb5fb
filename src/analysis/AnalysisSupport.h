#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace brevant::platform::automation {
class Variant;
}
namespace brevant::platform::geodatabase {
class FeatureClass;
}

/// What the user-defined and the probabilistic analyses share. None of these runs under a trap
/// of its own: the calling procedure's trap records their failures.
namespace brevant::analysis::detail {

/// Opens `className` of RegionFolder + `databaseName` through the context's GisDataService.
/// An answer that holds no feature class is error 91.
std::shared_ptr<platform::geodatabase::FeatureClass>
openRegionClass(const std::string& className, const std::string& databaseName);

/// Opens `className` of the database at `databasePath` through the context's GisDataService.
std::shared_ptr<platform::geodatabase::FeatureClass> openClassAt(const std::string& className,
                                                                 const std::string& databasePath);

/// Name of a line inventory class's hazard table: "Eq" + the name without its first two
/// characters + "hft" (hzRailwaySegment gives EqRailwaySegmenthft).
std::string lineHazardTableName(std::string_view lineClass);

/// Whether `tableName` is the tract hazard table "eqTract", which an analysis rebuilds when
/// it is empty instead of skipping it.
bool isTractTable(std::string_view tableName);

/// Adds the double field `fieldName` (alias the same) when missing, then sets it to "0.0" in
/// every record, so every run starts from zeros.
void addZeroedResultField(platform::geodatabase::FeatureClass& featureClass,
                          const std::string& fieldName);

/// When an update cursor walking an inventory is flushed: after every 101st feature (the
/// count passes 100 and starts again from 0), which bounds what a long walk holds uncommitted.
class FlushSchedule {
public:
    /// Counts one feature; true when the cursor is to be flushed now.
    bool countFeature()
    {
        if (++m_pending > kLimit) {
            m_pending = 0;
            return true;
        }
        return false;
    }

private:
    static constexpr int kLimit = 100;
    int m_pending = 0;
};

/// Hands an analysed class to the host: GisUtilityService::UpdateAnalysisTable.
void handOffAnalysisTable(const std::string& tableName, const std::string& databaseName,
                          const platform::automation::Variant& mapTypes, bool isPoint);

} // namespace brevant::analysis::detail
