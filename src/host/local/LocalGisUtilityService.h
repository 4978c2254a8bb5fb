#pragma once

#include "host/GisUtilityService.h"

#include <filesystem>

namespace brevant::host::local {

/// The reference host's utilities over the current region's tabular database (region.sqlite).
/// The operations not listed here are not provided (error 438).
///
/// Display precision of a table's field:
/// - the row of the optional table `DisplayPrecision (TableName TEXT, FieldName TEXT,
///   Precision INTEGER)` for that table and field (names compared without regard to case);
/// - otherwise, for a column of a server table: 0 for whole numbers and text, 2 for real
///   numbers;
/// - otherwise (a table or field the database does not hold) 2.
///
/// Default site values: section "SiteDefaults" of the region's settings, keys "stype",
/// "lqfsuscat", "lndsuscat" and "w_depth"; a key not set gives the default "D", 0, 0 and 0.
/// A value that is not a number where one is needed fails with error 13, one out of range
/// with 6.
///
/// Edit synchronisation: an inventory class S' (its name with a two-letter prefix, S without
/// it) of a region database is mirrored by the server tables "hz" + S and "Eq" + S, keyed by
/// the class's identifier field (index 2). A server table that does not exist, or lacks the
/// identifier column, is left alone (eqAebm has no "hz" table). Each operation writes in one
/// transaction: a failure leaves the server tables as they were.
///
/// Analysis tables: after an analysis the site conditions ("stype", "lqfsuscat", "lndsuscat",
/// "w_depth") and the result fields of the listed map types ("PGAM" pga, "PGVM" pgv, "SA03"
/// sa03, "SA10" sa10, "STGD" LqfSettlPGD, "LSGD" LqfSprPGD, "LFPR" LqfProb, "LDGD" LndPGD,
/// "LDPR" LndProb, "SRGD" SufFltRuptPGD, "SRPR" SurfFltRuptProb; all of them when no list is
/// given; codes compared without regard to case) are copied into the server tables in
/// the same way, columns that both sides have only. A server table that shares none of these
/// columns with the class (an attribute table "hz" + S) is left alone, so it gets no rows of
/// key alone.
///
/// Analysis record sets: the optional table `AnalysisRecordSets (RecordSetId TEXT, TableName
/// TEXT)` of region.sqlite names the inventory table of a record set; an id it does not hold
/// but that names a catalogued inventory class stands for that class. Any other id is an
/// UnknownKey host error.
///
/// Result tables: a catalogued inventory class's values are in its analysis table "Eq" + S;
/// any other table (or view) of region.sqlite holds its own values; a name "T_field" that is
/// no table stands for the table T when T has the column "field" (the thematic maps' naming).
/// Tables are named as region.sqlite stores them. Any other name is an UnknownKey host error.
class LocalGisUtilityService : public GisUtilityService {
public:
    explicit LocalGisUtilityService(std::filesystem::path root) : m_root(std::move(root)) {}

    int16_t GetDisplayPrecision(const std::string& tableName,
                                const std::string& fieldName) override;
    void GetDefaultSiteValues(std::string& soilType, int16_t& liquefactionCategory,
                              int16_t& landslideCategory, float& waterDepth) override;
    /// For every record of the class with a shape, writes its shape's Y and X into the
    /// "Latitude" and "Longitude" columns, and its "Tract" (a moved record may have changed
    /// tract) into "Tract", of the server rows with its identifier. Rows are not added.
    /// `databaseName` is a file of the region folder ("trn.mdb") or a full path.
    void UpdateMovedLocations(const std::string& tableName,
                              const std::string& databaseName) override;
    /// Copies every record of the class into the server tables: the columns that the class
    /// has too (names compared without regard to case) take its values, and a record without
    /// a server row gets one. Rows of records no longer in the class stay. Does nothing when
    /// `anyProcessed` is false.
    void UpdateEditedRecords(const std::string& databaseName, const std::string& tableName,
                             bool anyProcessed) override;
    /// Copies the analysis columns of every record of the point class `tableName` into "hz" +
    /// S and "Eq" + S. With `isPoint` false, `tableName` is a line class and its hazard table
    /// ("Eq" + S + "hft", in the same database) is copied as UpdateLineHazardTable does.
    /// `mapTypes` is an array or collection of codes, one code, or empty for all.
    void UpdateAnalysisTable(const std::string& tableName, const std::string& databaseName,
                             const Variant& mapTypes, bool isPoint) override;
    /// Copies the analysis columns of every record of the hazard table "Eq" + S + "hft" of
    /// `databaseName` into the server tables "Eq" + S + "hft" and "Eq" + S. A name not of that
    /// form is an UnknownKey host error.
    void UpdateLineHazardTable(const std::string& hazardTableName,
                               const std::string& databaseName, const Variant& mapTypes) override;
    /// New identifiers of a class S' are the two first letters of S in upper case and a
    /// number of at least six digits ("SC000042"), counting on from the highest such number
    /// in the class and its server tables; a table the catalogue does not hold counts from 1.
    void PrepareIdentifiers(const std::string& tableName) override;
    std::string GetNextIdentifier() override;
    std::string GetRecordSetTableName(const std::string& recordSetId) override;
    std::string GetResultTableName(const std::string& tableName) override;
    /// Deletes every row of a table of region.sqlite (named without regard to case); a name
    /// that is no table is an UnknownKey host error.
    void EmptyTable(const std::string& tableName) override;
    /// Stores the record in the table hzQueryTool (LayerIndex, LayerName, LayerKind,
    /// TableName, DatabaseName, JoinTableName, JoinDatabaseName), replacing the record of the
    /// same layer index.
    void WriteQueryToolRecord(int32_t layerIndex, const std::string& layerName, int16_t kind,
                              const std::string& tableName, const std::string& databaseName,
                              const std::string& joinTableName,
                              const std::string& joinDatabaseName) override;

private:
    static constexpr std::size_t kIdentifierDigits = 6;
    std::string m_identifierPrefix;
    int64_t m_nextIdentifier = 1;
    std::filesystem::path m_root;
};

} // namespace brevant::host::local
