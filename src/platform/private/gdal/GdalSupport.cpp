#include "gdal/GdalSupport.h"

#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/SqlQuote.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace brevant::platform::geodatabase::gdal {

using automation::Variant;

void ensureRegistered()
{
    static std::once_flag once;
    std::call_once(once, [] {
        // SQLite's default page cache (2 MB) thrashes on the R-tree of a class of a million
        // features: appending half a million points took half as long again. The cache grows
        // only as pages are used; a host that sets the option keeps its own.
        if (!CPLGetConfigOption("OGR_SQLITE_CACHE", nullptr)) {
            CPLSetConfigOption("OGR_SQLITE_CACHE", "256");
        }
        GDALAllRegister();
    });
}

FieldType fieldType(const OGRFieldDefn& definition)
{
    switch (definition.GetType()) {
    case OFTInteger:
        return definition.GetSubType() == OFSTInt16 || definition.GetSubType() == OFSTBoolean
                   ? FieldType::SmallInteger
                   : FieldType::Integer;
    case OFTInteger64:
        return FieldType::Integer;
    case OFTReal:
        return definition.GetSubType() == OFSTFloat32 ? FieldType::Single : FieldType::Double;
    case OFTDate:
    case OFTDateTime:
    case OFTTime:
        return FieldType::Date;
    default:
        return FieldType::String;
    }
}

std::string defaultLiteral(const Field& field)
{
    if (field.type != FieldType::String) {
        return field.defaultValue;
    }
    std::string quoted = "'";
    for (char c : field.defaultValue) {
        quoted += c;
        if (c == '\'') {
            quoted += c;
        }
    }
    return quoted + "'";
}

std::string defaultValueOf(const OGRFieldDefn& definition)
{
    const char* literal = definition.GetDefault();
    if (literal == nullptr) {
        return "";
    }
    std::string text = literal;
    if (text.size() >= 2 && text.front() == '\'' && text.back() == '\'') {
        std::string unquoted;
        for (std::size_t i = 1; i + 1 < text.size(); ++i) {
            unquoted += text[i];
            if (text[i] == '\'' && i + 2 < text.size() && text[i + 1] == '\'') {
                ++i;
            }
        }
        return unquoted;
    }
    return text;
}

std::unique_ptr<OGRFieldDefn> fieldDefinition(const Field& field)
{
    OGRFieldType type = OFTString;
    OGRFieldSubType subType = OFSTNone;
    switch (field.type) {
    case FieldType::SmallInteger:
        type = OFTInteger;
        subType = OFSTInt16;
        break;
    case FieldType::Integer:
    case FieldType::OID:
        type = OFTInteger;
        break;
    case FieldType::Single:
        type = OFTReal;
        subType = OFSTFloat32;
        break;
    case FieldType::Double:
        type = OFTReal;
        break;
    case FieldType::Date:
        type = OFTDateTime;
        break;
    case FieldType::String:
    case FieldType::Geometry:
        type = OFTString;
        break;
    }
    auto definition = std::make_unique<OGRFieldDefn>(field.name.c_str(), type);
    definition->SetSubType(subType);
    if (field.type == FieldType::String && field.length > 0) {
        definition->SetWidth(field.length);
    }
    if (!field.aliasName.empty()) {
        definition->SetAlternativeName(field.aliasName.c_str());
    }
    if (!field.defaultValue.empty()) {
        definition->SetDefault(defaultLiteral(field).c_str());
    }
    return definition;
}

Variant readValue(const OGRFeature& feature, int ogrIndex, FieldType type)
{
    if (!feature.IsFieldSetAndNotNull(ogrIndex)) {
        return Variant::null();
    }
    switch (type) {
    case FieldType::SmallInteger:
        return static_cast<int16_t>(feature.GetFieldAsInteger(ogrIndex));
    case FieldType::Integer:
    case FieldType::OID: {
        const GIntBig value = feature.GetFieldAsInteger64(ogrIndex);
        if (value >= INT32_MIN && value <= INT32_MAX) {
            return static_cast<int32_t>(value);
        }
        return static_cast<double>(value);
    }
    case FieldType::Single:
    case FieldType::Double:
        return feature.GetFieldAsDouble(ogrIndex);
    case FieldType::Date: {
        int y = 0, mo = 0, d = 0, h = 0, mi = 0, tz = 0;
        float s = 0;
        feature.GetFieldAsDateTime(ogrIndex, &y, &mo, &d, &h, &mi, &s, &tz);
        return automation::Date::fromParts(y, mo, d, h, mi, static_cast<int>(s));
    }
    default:
        return std::string(feature.GetFieldAsString(ogrIndex));
    }
}

void writeValue(OGRFeature& feature, int ogrIndex, FieldType type, const Variant& value)
{
    if (value.isEmpty() || value.isNull()) {
        feature.SetFieldNull(ogrIndex);
        return;
    }
    switch (type) {
    case FieldType::SmallInteger:
        feature.SetField(ogrIndex, value.toInt16());
        break;
    case FieldType::Integer:
    case FieldType::OID:
        feature.SetField(ogrIndex, value.toInt32());
        break;
    case FieldType::Single:
    case FieldType::Double:
        feature.SetField(ogrIndex, value.toDouble());
        break;
    case FieldType::Date: {
        const std::string text = value.toDate().toString();
        int y = 0, mo = 0, d = 0, h = 0, mi = 0, s = 0;
        std::sscanf(text.c_str(), "%d-%d-%d %d:%d:%d", &y, &mo, &d, &h, &mi, &s);
        feature.SetField(ogrIndex, y, mo, d, h, mi, static_cast<float>(s), 0);
        break;
    }
    default:
        feature.SetField(ogrIndex, value.toString().c_str());
        break;
    }
}

namespace {
void collectParts(const OGRGeometry& geometry, std::vector<std::vector<geometry::Point>>& rings,
                  std::vector<std::vector<geometry::Point>>& paths,
                  std::vector<geometry::Point>& points)
{
    const auto pointsOf = [](const OGRSimpleCurve& curve) {
        std::vector<geometry::Point> out;
        for (int i = 0; i < curve.getNumPoints(); ++i) {
            out.push_back({curve.getX(i), curve.getY(i)});
        }
        return out;
    };
    const auto distinct = [](const std::vector<geometry::Point>& part) {
        std::vector<geometry::Point> sorted = part;
        std::sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) {
            return a.x < b.x || (a.x == b.x && a.y < b.y);
        });
        return static_cast<std::size_t>(std::unique(sorted.begin(), sorted.end()) - sorted.begin());
    };
    switch (wkbFlatten(geometry.getGeometryType())) {
    case wkbPoint:
        if (!geometry.IsEmpty()) {
            points.push_back({geometry.toPoint()->getX(), geometry.toPoint()->getY()});
        }
        break;
    case wkbLineString: {
        auto path = pointsOf(*geometry.toLineString());
        if (distinct(path) >= 2) {
            paths.push_back(std::move(path));
        }
        break;
    }
    case wkbPolygon:
        for (const OGRLinearRing* ring : *geometry.toPolygon()) {
            auto closed = pointsOf(*ring);
            if (distinct(closed) >= 3) {
                rings.push_back(std::move(closed));
            }
        }
        break;
    case wkbMultiPoint:
    case wkbMultiLineString:
    case wkbMultiPolygon:
    case wkbGeometryCollection:
        for (const OGRGeometry* member : *geometry.toGeometryCollection()) {
            collectParts(*member, rings, paths, points);
        }
        break;
    default:
        break;
    }
}

geometry::Geometry rebuiltWithoutDegenerateParts(const OGRGeometry& geometry)
{
    std::vector<std::vector<geometry::Point>> rings;
    std::vector<std::vector<geometry::Point>> paths;
    std::vector<geometry::Point> points;
    collectParts(geometry, rings, paths, points);
    if (!rings.empty()) {
        return geometry::Geometry::polygon(rings);
    }
    if (!paths.empty()) {
        return geometry::Geometry::polyline(paths);
    }
    if (points.size() == 1) {
        return geometry::Geometry::point(points.front());
    }
    return points.empty() ? geometry::Geometry() : geometry::Geometry::multipoint(points);
}
} // namespace

geometry::Geometry toGeometry(const OGRGeometry* geometry)
{
    if (!geometry || geometry->IsEmpty()) {
        return {};
    }
    // Points are most of what statewide inventories hold; skip the WKB round trip for them.
    if (wkbFlatten(geometry->getGeometryType()) == wkbPoint) {
        const auto* point = geometry->toPoint();
        return geometry::Geometry::point({point->getX(), point->getY()});
    }
    thread_local std::vector<unsigned char> wkb;
    wkb.resize(static_cast<std::size_t>(geometry->WkbSize()));
    geometry->exportToWkb(wkbNDR, wkb.data(), wkbVariantIso);
    try {
        return geometry::Geometry::fromWkb(wkb);
    } catch (const automation::PlatformError&) {
        // Files in the wild hold paths of one point and rings of two; GEOS refuses to build
        // them. Rebuilt without those parts, the shape can still be repaired and used.
        return rebuiltWithoutDegenerateParts(*geometry);
    }
}

std::unique_ptr<OGRGeometry> toOgr(const geometry::Geometry& geometry)
{
    if (geometry.isNull()) {
        return nullptr;
    }
    // The reverse of the shortcut in toGeometry.
    if (geometry.type() == geometry::ShapeType::Point && !geometry.isEmpty()) {
        const geometry::Point p = geometry.firstPoint();
        return std::make_unique<OGRPoint>(p.x, p.y);
    }
    const auto wkb = geometry.toWkb();
    OGRGeometry* created = nullptr;
    ErrorScope errors;
    if (OGRGeometryFactory::createFromWkb(wkb.data(), nullptr, &created,
                                          static_cast<int>(wkb.size())) != OGRERR_NONE) {
        errors.fail("cannot convert a shape for storage");
    }
    return std::unique_ptr<OGRGeometry>(created);
}

std::string sqlName(const std::string& name)
{
    return sqlQuoted(name, '"');
}

} // namespace brevant::platform::geodatabase::gdal
