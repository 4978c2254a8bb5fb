#pragma once

#include "context/ObjectWithMap.h"
#include "platform/automation/Variant.h"
#include "platform/geometry/ShapeType.h"

#include <cstdint>
#include <string>

namespace brevant::inventory {

/// The members the point and line inventory classes share to the letter; the line class
/// differs only in the shape type its IsValid wants and in the point flag its analyses pass.
/// Failures end a member through its trap: 0x8004060C, 0x80040608 for the map members.
class InventoryClass : public context::ObjectWithMap {
public:
    /// Checks a candidate class of the class's shape type (context::CheckCandidateClass).
    /// Never raises.
    void IsValid(const std::string& MDBName, const std::string& TableName,
                 const std::string& MDBPath, platform::automation::Variant& NRecs,
                 int16_t& IsGeoDB);
    /// Redraws the map. Tag " RefreshMap".
    void RefreshMap();
    /// Obsolete: tells the user "This Method is obsolete , Call GenerateThematicMap".
    void GenerateThmMap(const std::string& Sqltable, int16_t iDataBaseType, int16_t& ThmMapType,
                        std::string& FieldNameToMap);
    /// The thematic map of an inventory result table: the builder draws `Sqltable` joined to
    /// its inventory class of the database `iDataBaseType` names. Tag " GenerateThematicMap",
    /// code 0x80040608.
    void GenerateThematicMap(const std::string& Sqltable, int16_t iDataBaseType,
                             int16_t& ThmMapType, std::string& FieldNameToMap, double& dMInVal,
                             double& dMaxVal);
    /// The user-defined analysis of the class that GisUtilityService names for the record set
    /// `RsId`. Tag " AnalyzeUserDefinedScenario".
    void AnalyzeUserDefinedScenario(const std::string& RsId,
                                    const platform::automation::Variant& vMapType,
                                    const platform::automation::Variant& vProgressBar);
    /// The probabilistic analysis of the record set's class for a return period. Tag
    /// " AnalyzeProbabilisticScenario".
    void AnalyzeProbabilisticScenario(const std::string& RsId, int16_t RetrunPeriod,
                                      const platform::automation::Variant& vProgressBar);
    /// Deletes the scratch copy of a class in temp.mdb; a copy that is not there is nothing to
    /// delete. Tag " DeleteTempTable".
    void DeleteTempTable(const std::string& HzTableName);

protected:
    explicit InventoryClass(platform::geometry::ShapeType shapeType) : m_shapeType(shapeType) {}

    /// MapPointdata and MapLinedata: the class `sTable` of the database `iDataBaseType` names,
    /// on the map through context::AddInventoryLayer (selectable, visible, its own name).
    void mapClass(const std::string& tag, const std::string& sTable, int16_t iDataBaseType);
    /// The probabilistic analysis under a trap of the caller's choosing.
    void analyzeProbabilistic(const std::string& tag, const std::string& RsId,
                              int16_t RetrunPeriod,
                              const platform::automation::Variant& vProgressBar);

private:
    bool isPoint() const { return m_shapeType == platform::geometry::ShapeType::Point; }

    platform::geometry::ShapeType m_shapeType;
};

} // namespace brevant::inventory
