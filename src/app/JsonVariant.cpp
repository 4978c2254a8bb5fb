#include "app/JsonVariant.h"

#include "platform/automation/AutomationError.h"
#include "platform/automation/Collection.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/VariantArray.h"
#include "host/HostServices.h"
#include "host/RegionContextService.h"
#include "platform/tabular/Connection.h"

namespace brevant::app {

using json = nlohmann::ordered_json;
using platform::automation::Collection;
using platform::automation::Date;
using platform::automation::Variant;
using platform::automation::VariantArray;
using platform::automation::VariantType;

namespace {
[[noreturn]] void badArgument(const std::string& why)
{
    throw platform::automation::AutomationError(platform::automation::ErrorNumber::InvalidArgument,
                                                "brevant script", why);
}

Variant typedValue(const json& value, const ObjectLookup& lookup)
{
    if (value.size() != 1) {
        badArgument("a typed argument has exactly one key: " + value.dump());
    }
    const auto entry = value.begin();
    const std::string kind = entry.key();
    const json& inner = entry.value();
    if (kind == "i2") {
        return Variant(inner.get<double>()).toInt16();
    }
    if (kind == "i4") {
        return Variant(inner.get<double>()).toInt32();
    }
    if (kind == "r8") {
        return Variant(inner.get<double>());
    }
    if (kind == "date") {
        return Date::parse(inner.get<std::string>());
    }
    if (kind == "empty") {
        return Variant();
    }
    if (kind == "collection") {
        if (!inner.is_array()) {
            badArgument("\"collection\" needs an array: " + value.dump());
        }
        auto collection = std::make_shared<Collection>();
        for (const auto& item : inner) {
            collection->add(variantFromJson(item, lookup));
        }
        return collection;
    }
    if (kind == "array2") {
        if (!inner.is_array() || inner.empty() || !inner.front().is_array()) {
            badArgument("\"array2\" needs an array of rows: " + value.dump());
        }
        const auto columns = static_cast<int32_t>(inner.front().size());
        VariantArray array({0, static_cast<int32_t>(inner.size())}, {0, columns});
        for (std::size_t i = 0; i < inner.size(); ++i) {
            if (!inner[i].is_array() || static_cast<int32_t>(inner[i].size()) != columns) {
                badArgument("every row of \"array2\" needs " + std::to_string(columns) + " values");
            }
            for (int32_t j = 0; j < columns; ++j) {
                array.at(static_cast<int32_t>(i), j) = variantFromJson(inner[i][j], lookup);
            }
        }
        return array;
    }
    if (kind == "recordset") {
        if (!inner.is_string()) {
            badArgument("\"recordset\" needs a query on the region database: " + value.dump());
        }
        // Read at once and detached: the records outlive the connection, as a host's are.
        const auto connection = platform::tabular::Connection::connect(
            host::hostServices().createRegionContextService()->GetRegionDatabaseName());
        auto records = connection->open(inner.get<std::string>());
        records->setActiveConnection(nullptr);
        return records;
    }
    if (kind == "ref") {
        const auto name = inner.get<std::string>();
        auto object = lookup(name);
        if (!object) {
            badArgument("no object is named \"" + name + "\"");
        }
        return object;
    }
    badArgument("unknown argument type \"" + kind + "\"");
}
} // namespace

Variant variantFromJson(const json& value, const ObjectLookup& lookup)
{
    try {
        switch (value.type()) {
        case json::value_t::null:
            return Variant::null();
        case json::value_t::boolean:
            return value.get<bool>();
        case json::value_t::number_integer:
        case json::value_t::number_unsigned:
        case json::value_t::number_float:
            return value.get<double>();
        case json::value_t::string:
            return value.get<std::string>();
        case json::value_t::array: {
            std::vector<Variant> items;
            for (const auto& item : value) {
                items.push_back(variantFromJson(item, lookup));
            }
            return VariantArray::of(std::move(items));
        }
        case json::value_t::object:
            return typedValue(value, lookup);
        default:
            break;
        }
    } catch (const json::exception& e) {
        badArgument("cannot read argument " + value.dump() + ": " + e.what());
    }
    badArgument("cannot read argument " + value.dump());
}

json variantToJson(const Variant& value, const ObjectNamer& namer)
{
    switch (value.type()) {
    case VariantType::Empty:
    case VariantType::Null:
        return nullptr;
    case VariantType::Boolean:
        return value.toBool();
    case VariantType::Int16:
    case VariantType::Int32:
        return value.toInt32();
    case VariantType::Double:
        return value.toDouble();
    case VariantType::String:
        return value.toString();
    case VariantType::Date:
        return json{{"date", value.toDate().toString()}};
    case VariantType::Array: {
        const auto& array = value.array();
        json out = json::array();
        if (array.dimensions() == 2) {
            for (int32_t i = array.lowerBound(1); i <= array.upperBound(1); ++i) {
                json row = json::array();
                for (int32_t j = array.lowerBound(2); j <= array.upperBound(2); ++j) {
                    row.push_back(variantToJson(array.at(i, j), namer));
                }
                out.push_back(row);
            }
        } else {
            for (const auto& item : array.elements()) {
                out.push_back(variantToJson(item, namer));
            }
        }
        return out;
    }
    case VariantType::Collection: {
        json items = json::array();
        for (const auto& item : *value.collection()) {
            items.push_back(variantToJson(item, namer));
        }
        return json{{"collection", items}};
    }
    case VariantType::Object: {
        const auto object = value.object();
        if (!object) {
            return nullptr;
        }
        json out{{"object", std::string(object->className())}};
        if (auto name = namer(*object); !name.empty()) {
            out["ref"] = name;
        }
        return out;
    }
    }
    return nullptr;
}

} // namespace brevant::app
