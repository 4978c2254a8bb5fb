#include "inventory/InventoryClass.h"

#include "analysis/EqProbabilistic.h"
#include "analysis/EqUserDefined.h"
#include "context/CandidateClass.h"
#include "context/EqShape.h"
#include "context/ErrorTrap.h"
#include "host/GisUtilityService.h"
#include "host/HostServices.h"
#include "inventory/InventorySupport.h"
#include "platform/automation/ErrorNumbers.h"
#include "thematic/EqThematicMap.h"

namespace brevant::inventory {

using platform::automation::Variant;
using platform::automation::LibraryCode::MapLayer;
using platform::automation::LibraryCode::Procedure;

namespace {
std::string recordSetTable(const std::string& RsId)
{
    return host::hostServices().createGisUtilityService()->GetRecordSetTableName(RsId);
}
} // namespace

void InventoryClass::IsValid(const std::string& MDBName, const std::string& TableName,
                             const std::string& MDBPath, Variant& NRecs, int16_t& IsGeoDB)
{
    context::CheckCandidateClass(MDBName, TableName, MDBPath, NRecs, IsGeoDB, m_shapeType);
}

void InventoryClass::RefreshMap()
{
    context::runTrapped(" RefreshMap", Procedure, [] { context::RefreshView(); });
}

void InventoryClass::GenerateThmMap(const std::string& /*Sqltable*/, int16_t /*iDataBaseType*/,
                                    int16_t& /*ThmMapType*/, std::string& /*FieldNameToMap*/)
{
    showObsolete("This Method is obsolete , Call GenerateThematicMap");
}

void InventoryClass::GenerateThematicMap(const std::string& Sqltable, int16_t iDataBaseType,
                                         int16_t& ThmMapType, std::string& FieldNameToMap,
                                         double& dMInVal, double& dMaxVal)
{
    context::runTrapped(" GenerateThematicMap", MapLayer, [&] {
        thematic::CreateThematicMap(Sqltable, context::InventoryDatabasePath(iDataBaseType),
                                    ThmMapType, FieldNameToMap, dMInVal, dMaxVal, true, true, "");
    });
}

void InventoryClass::AnalyzeUserDefinedScenario(const std::string& RsId, const Variant& vMapType,
                                                const Variant& vProgressBar)
{
    context::runTrapped(" AnalyzeUserDefinedScenario", Procedure, [&] {
        std::string tableName = recordSetTable(RsId);
        analysis::AnalyzeInvtUserDefinedScenario(tableName, vMapType, vProgressBar, isPoint());
    });
}

void InventoryClass::AnalyzeProbabilisticScenario(const std::string& RsId, int16_t RetrunPeriod,
                                                  const Variant& vProgressBar)
{
    analyzeProbabilistic(" AnalyzeProbabilisticScenario", RsId, RetrunPeriod, vProgressBar);
}

void InventoryClass::DeleteTempTable(const std::string& HzTableName)
{
    deleteTempTable(HzTableName);
}

void InventoryClass::mapClass(const std::string& tag, const std::string& sTable,
                              int16_t iDataBaseType)
{
    context::runTrapped(tag, MapLayer, [&] {
        context::AddInventoryLayer(openClass(sTable, context::InventoryDatabasePath(iDataBaseType)),
                                   true, 0, true, "");
    });
}

void InventoryClass::analyzeProbabilistic(const std::string& tag, const std::string& RsId,
                                          int16_t RetrunPeriod, const Variant& vProgressBar)
{
    context::runTrapped(tag, Procedure, [&] {
        std::string tableName = recordSetTable(RsId);
        analysis::AnalyzeProbDefinedScenario(tableName, RetrunPeriod, vProgressBar, isPoint());
    });
}

} // namespace brevant::inventory
