#pragma once

#include "platform/automation/Variant.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/geometry/Geometry.h"
#include "support/HostFixture.h"

#include <memory>
#include <string>
#include <vector>

namespace brevant::test {

/// A feature written by WKT with its attribute values in field order (after the shape).
struct TestFeature {
    std::string wkt;
    std::vector<platform::automation::Variant> values;
};

/// A personal geodatabase in a temporary folder to build small feature classes in.
class TestFeatures {
public:
    TestFeatures()
        : m_workspace(
              platform::geodatabase::Workspace::createGeoPackage(m_dir.path() / "carto.mdb"))
    {
    }

    std::shared_ptr<platform::geodatabase::FeatureClass>
    add(const std::string& name, platform::geometry::ShapeType type,
        const platform::geodatabase::Fields& attributes, const std::vector<TestFeature>& features)
    {
        auto created = m_workspace.createFeatureClass(name, attributes, type);
        platform::geodatabase::InsertCursor insert = created->insert();
        for (const TestFeature& feature : features) {
            platform::geodatabase::Row row = created->createRow();
            row.setShape(platform::geometry::Geometry::fromWkt(feature.wkt));
            for (std::size_t i = 0; i < feature.values.size(); ++i) {
                row.setValue(static_cast<int>(i) + 2, feature.values[i]);
            }
            insert.insertRow(row);
        }
        insert.flush();
        return created;
    }

    platform::geodatabase::Workspace& workspace() { return m_workspace; }
    const std::filesystem::path& folder() const { return m_dir.path(); }

private:
    TempDir m_dir;
    platform::geodatabase::Workspace m_workspace;
};

/// A square polygon of side `size` with its lower-left corner at (x, y), as WKT.
inline std::string squareWkt(double x, double y, double size)
{
    const auto n = [](double v) { return std::to_string(v); };
    return "POLYGON ((" + n(x) + " " + n(y) + ", " + n(x + size) + " " + n(y) + ", " + n(x + size) +
           " " + n(y + size) + ", " + n(x) + " " + n(y + size) + ", " + n(x) + " " + n(y) + "))";
}

} // namespace brevant::test
