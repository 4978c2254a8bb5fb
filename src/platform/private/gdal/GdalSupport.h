#pragma once

// Private to the geodatabase layer: owning handles and error capture for GDAL/OGR.

#include "platform/automation/Variant.h"
#include "platform/geodatabase/Field.h"
#include "platform/geometry/Geometry.h"

#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include <memory>
#include <string>

namespace brevant::platform::geodatabase::gdal {

struct DatasetCloser {
    void operator()(GDALDataset* dataset) const { GDALClose(dataset); }
};
using DatasetPtr = std::unique_ptr<GDALDataset, DatasetCloser>;

struct FeatureDeleter {
    void operator()(OGRFeature* feature) const { OGRFeature::DestroyFeature(feature); }
};
/// GetNextFeature hands over ownership; this owns it.
using FeaturePtr = std::unique_ptr<OGRFeature, FeatureDeleter>;

/// Registers the drivers once.
void ensureRegistered();

/// Captures GDAL's errors and warnings for the lifetime of the scope instead of printing them;
/// the last error message is available to build a PlatformError.
class ErrorScope {
public:
    ErrorScope();
    ~ErrorScope();
    ErrorScope(const ErrorScope&) = delete;
    ErrorScope& operator=(const ErrorScope&) = delete;

    /// The last error message captured, or "" when none.
    const std::string& lastMessage() const { return m_message; }
    int lastNumber() const { return m_number; }
    /// Throws PlatformError(GdalBase + number, "GDAL", what + ": " + last message).
    [[noreturn]] void fail(const std::string& what) const;

private:
    static void CPL_STDCALL handler(CPLErr level, CPLErrorNum number, const char* message);

    std::string m_message;
    int m_number = 0;
};

/// Field type of an OGR field definition.
FieldType fieldType(const OGRFieldDefn& definition);
/// OGR field definition of a field (name as given, width for text, sub-types for small
/// integers and singles).
std::unique_ptr<OGRFieldDefn> fieldDefinition(const Field& field);
/// A field's default value as OGR stores it: text quoted as an SQL literal, numbers as they are.
std::string defaultLiteral(const Field& field);
/// The default value of an OGR field definition, unquoted; empty when it has none.
std::string defaultValueOf(const OGRFieldDefn& definition);

/// A feature's attribute as a variant (Null when unset or null).
automation::Variant readValue(const OGRFeature& feature, int ogrIndex, FieldType type);
/// Stores a variant in a feature's attribute (Empty and Null clear it).
void writeValue(OGRFeature& feature, int ogrIndex, FieldType type,
                const automation::Variant& value);

/// Geometry conversions through WKB.
geometry::Geometry toGeometry(const OGRGeometry* geometry);
std::unique_ptr<OGRGeometry> toOgr(const geometry::Geometry& geometry);

/// A table or column name quoted for SQLite and OGR SQL.
std::string sqlName(const std::string& name);

} // namespace brevant::platform::geodatabase::gdal
