#pragma once

#include <string>

/// The hand-off of map edits of an inventory class to the host's tabular database: the host
/// (GisUtilityService) keeps the class's server tables; these procedures say when and for which
/// class and database. Each runs under its own error trap with code 0x8004060C: a host failure
/// is recorded once in EqErrorLog.txt under the tag named and raised as an AutomationError.
namespace brevant::context {

/// Asks the host to copy the locations of the class's records moved on the map into its server
/// tables; the database comes from InventoryCatalogService. Tag " SyncLocMovedFromMap".
void SyncLocMovedFromMap(const std::string& tableName);

/// Asks the host to copy the class's edited or imported records into its server tables;
/// `anyProcessed` tells whether any record was processed. Tag " SyncTabEditedFromMap".
void SyncTabEditedFromMap(const std::string& tableName, bool anyProcessed);

} // namespace brevant::context
