#pragma once

// Private to the geodatabase layer: owning handles and error capture for GDAL/OGR.

#include "cpl/CplSupport.h"
#include "platform/automation/Variant.h"
#include "platform/geodatabase/Field.h"
#include "platform/geometry/Geometry.h"

#include <gdal_priv.h>
#include <memory>
#include <ogrsf_frmts.h>
#include <string>
#include <utility>

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

using cpl::ErrorScope;

/// A result set of ExecuteSQL, released to the dataset that made it when the holder goes.
class ResultSet {
public:
    ResultSet() = default;
    ResultSet(GDALDataset& dataset, OGRLayer* layer) : m_dataset(&dataset), m_layer(layer) {}
    ~ResultSet() { reset(); }
    ResultSet(ResultSet&& other) noexcept
        : m_dataset(other.m_dataset), m_layer(std::exchange(other.m_layer, nullptr))
    {
    }
    ResultSet& operator=(ResultSet&& other) noexcept
    {
        if (this != &other) {
            reset();
            m_dataset = other.m_dataset;
            m_layer = std::exchange(other.m_layer, nullptr);
        }
        return *this;
    }

    void reset()
    {
        if (m_layer) {
            m_dataset->ReleaseResultSet(std::exchange(m_layer, nullptr));
        }
    }
    OGRLayer* get() const { return m_layer; }
    OGRLayer* operator->() const { return m_layer; }
    explicit operator bool() const { return m_layer != nullptr; }

private:
    GDALDataset* m_dataset = nullptr;
    OGRLayer* m_layer = nullptr;
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
