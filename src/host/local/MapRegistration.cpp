#include "host/local/MapRegistration.h"

#include "host/HazardCodes.h"
#include "host/local/HostErrors.h"
#include "host/local/HostRoot.h"
#include "host/local/RegionDatabase.h"
#include "host/local/SchemaWriter.h"
#include "host/local/Schemas.h"
#include "platform/geodatabase/Cursor.h"

#include <cctype>
#include <cmath>

namespace brevant::host::local {

namespace fs = std::filesystem;
using platform::automation::Variant;
using platform::geodatabase::Cursor;
using platform::geodatabase::InsertCursor;
using platform::geodatabase::Row;
using platform::geodatabase::Workspace;
using platform::geometry::Geometry;
using platform::geometry::ShapeType;

namespace {

std::string codeList()
{
    std::string list;
    for (const auto& code : hazardCodes()) {
        list += (list.empty() ? "" : ", ") + code.code;
    }
    return list;
}

/// The value as the code stores it; null when it cannot be one.
Variant convert(const Variant& value, HazardCode::Value kind)
{
    if (value.isNull() || value.isEmpty()) {
        return Variant::null();
    }
    if (kind == HazardCode::Value::Text) {
        std::string text = value.toString();
        return text.find_first_not_of(' ') == std::string::npos ? Variant::null()
                                                                : Variant(std::move(text));
    }
    if (!value.isNumeric()) {
        return Variant::null();
    }
    const double number = value.toDouble();
    if (!std::isfinite(number)) {
        return Variant::null();
    }
    if (kind == HazardCode::Value::Category) {
        if (number != std::floor(number) || std::abs(number) > 32767) {
            return Variant::null();
        }
        return Variant(static_cast<int16_t>(number));
    }
    return Variant(number);
}

/// The one value given for a whole map as the code stores it; null when the code does not
/// allow it. Values read from the map's own field are kept as they are: the clip repairs them.
Variant convertWhole(const std::string& text, const HazardCode& code)
{
    Variant value = convert(Variant(text), code.value);
    if (value.isNull()) {
        return value;
    }
    if (!code.letters.empty()) {
        const std::string letter = value.toString();
        const auto found = letter.size() == 1
                               ? code.letters.find(static_cast<char>(
                                     std::toupper(static_cast<unsigned char>(letter[0]))))
                               : std::string::npos;
        return found == std::string::npos ? Variant::null()
                                          : Variant(std::string(1, code.letters[found]));
    }
    if (code.categories) {
        const int category = value.toInt32();
        if (category < code.categories->first || category > code.categories->second) {
            return Variant::null();
        }
    }
    return value;
}

} // namespace

MapReport registerMap(const fs::path& root, const MapRequest& request)
{
    const HostRoot host = HostRoot::load(root);
    const std::string region = host.regionNamed(request.region).name;
    const auto code = findHazardCode(request.code);
    if (!code) {
        hostError(HostError::InvalidInput,
                  "\"" + request.code + "\" is not a hazard code (" + codeList() + ")");
    }
    const UserMapSchema* schema = findUserMap(code->code);
    if (!schema) {
        hostError(HostError::UnknownKey, "the host has no map schema for " + code->code);
    }
    if (request.value && !request.valueField.empty()) {
        hostError(HostError::InvalidInput, "give a value field or one value, not both");
    }
    Variant fixed;
    if (request.value) {
        fixed = convertWhole(*request.value, *code);
        if (fixed.isNull()) {
            hostError(HostError::InvalidInput,
                      "\"" + *request.value + "\" is not a value of " + code->code + " (" +
                          code->description + ")");
        }
    }

    auto source = openVectorSource(request.source);
    if (source->shapeType() != ShapeType::Polygon) {
        hostError(HostError::InvalidInput,
                  "the map " + request.source.describe() + " must hold polygons");
    }
    const int valueIndex =
        request.value ? -1
                      : requireField(*source, request.source, request.valueField,
                                     {code->valueField}, "value");

    MapReport result;
    result.region = region;
    result.code = code->code;
    result.className = schema->map.name;
    const fs::path folder = fs::path(host.regionFolder(region)) / kUserMapFolder;
    result.database = folder / (code->code + ".mdb");
    const fs::path staging = folder / ("." + code->code + ".mdb.partial");
    const bool newFolder = !fs::exists(folder);
    fs::create_directories(folder);
    fs::remove(staging);
    try {
        Workspace target = Workspace::createGeoPackage(staging);
        createClass(target, schema->map);
        auto features = target.openFeatureClass(schema->map.name);
        const int targetIndex = features->findField(code->valueField);
        ShapeImporter import(source->spatialReference(), ShapeType::Polygon);
        InsertCursor insert = features->insert();
        Cursor cursor = source->search();
        Row row;
        while (cursor.next(row)) {
            const Geometry shape = import(row.shape());
            if (shape.isNull()) {
                continue;
            }
            Row out = features->createRow();
            const Variant value = request.value ? fixed : convert(row.value(valueIndex), code->value);
            result.emptyValues += value.isNull() ? 1 : 0;
            out.setValue(targetIndex, value);
            out.setShape(shape);
            insert.insertRow(out);
            ++result.polygons;
        }
        insert.flush();
        result.repaired = import.repaired();
        result.dropped = import.dropped();
        if (result.polygons == 0) {
            hostError(HostError::InvalidInput,
                      "the map " + request.source.describe() + " holds no usable polygon");
        }
    } catch (...) {
        std::error_code ec;
        fs::remove(staging, ec);
        if (newFolder) {
            fs::remove(folder, ec);
        }
        throw;
    }
    fs::rename(staging, result.database);
    RegionDatabase(host.regionDatabasePath(region))
        .putUserMap({code->code, result.database.filename().string(), result.className,
                     std::string(kUserMapFolder), request.source.describe(), false});
    return result;
}

} // namespace brevant::host::local
