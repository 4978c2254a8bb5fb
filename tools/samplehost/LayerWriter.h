#pragma once

#include "platform/automation/Date.h"
#include "platform/automation/Variant.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/geometry/Geometry.h"
#include "samplehost/SampleSources.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace brevant::samplehost {

using platform::automation::Date;
using platform::automation::Variant;
using platform::geodatabase::Field;
using platform::geodatabase::Fields;
using platform::geodatabase::FieldType;
using platform::geodatabase::InsertCursor;
using platform::geodatabase::Row;
using platform::geodatabase::Table;
using platform::geodatabase::Workspace;
using platform::geometry::Geometry;
using platform::geometry::ShapeType;

inline Field textField(std::string name, int length)
{
    return {std::move(name), FieldType::String, length, {}};
}
inline Field integerField(std::string name)
{
    return {std::move(name), FieldType::Integer, 0, {}};
}
inline Field smallField(std::string name)
{
    return {std::move(name), FieldType::SmallInteger, 0, {}};
}
inline Field doubleField(std::string name)
{
    return {std::move(name), FieldType::Double, 0, {}};
}
inline Field dateField(std::string name)
{
    return {std::move(name), FieldType::Date, 0, {}};
}

/// Writes one layer into a GeoPackage of its own, row by row: set the values, then add.
class LayerWriter {
public:
    LayerWriter(const std::filesystem::path& folder, const std::string& name, ShapeType shapeType,
                const std::vector<Field>& fields)
        : m_source{folder / (name + ".gpkg"), name}, m_workspace(freshGeoPackage(m_source.path))
    {
        m_table = shapeType == ShapeType::Null
                      ? m_workspace.createTable(name, Fields(fields))
                      : m_workspace.createFeatureClass(name, Fields(fields), shapeType);
        for (const Field& field : fields) {
            m_names.push_back(field.name);
            m_indexes.push_back(m_table->findField(field.name));
        }
        m_cursor.emplace(m_table->insert());
        m_row = m_table->createRow();
    }

    void set(std::string_view field, Variant value)
    {
        for (std::size_t k = 0; k < m_names.size(); ++k) {
            if (m_names[k] == field) {
                m_row.setValue(m_indexes[k], std::move(value));
                return;
            }
        }
        throw std::logic_error("sample sources: " + m_source.name + " has no field " +
                               std::string(field));
    }

    /// Stores the values set since the last row (unset ones stay null); returns the OBJECTID.
    std::int64_t add(Geometry shape = {})
    {
        if (!shape.isNull()) {
            m_row.setShape(std::move(shape));
        }
        const std::int64_t oid = m_cursor->insertRow(m_row);
        m_row = m_table->createRow();
        ++m_count;
        return oid;
    }

    /// Commits what was added; throws when the storage refuses.
    SourceLayer finish()
    {
        m_cursor->flush();
        m_cursor.reset();
        return m_source;
    }

    std::int64_t count() const { return m_count; }

private:
    static Workspace freshGeoPackage(const std::filesystem::path& path)
    {
        for (const char* suffix : {"", "-journal", "-wal", "-shm"}) {
            std::filesystem::remove(path.string() + suffix);
        }
        return Workspace::createGeoPackage(path);
    }

    SourceLayer m_source;
    Workspace m_workspace;
    std::shared_ptr<Table> m_table;
    std::vector<std::string> m_names;
    std::vector<int> m_indexes;
    std::optional<InsertCursor> m_cursor;
    Row m_row;
    std::int64_t m_count = 0;
};

inline Variant int32(std::int64_t value)
{
    return Variant(static_cast<std::int32_t>(value));
}
inline Variant int16(int value)
{
    return Variant(static_cast<std::int16_t>(value));
}

} // namespace brevant::samplehost
