#pragma once

#include "platform/automation/AutomationObject.h"
#include "platform/automation/Variant.h"

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

namespace brevant::app {

/// Finds an object named earlier in a script; returns null when there is none.
using ObjectLookup =
    std::function<std::shared_ptr<platform::automation::AutomationObject>(const std::string&)>;
/// The script name of an object, or "" when it has none.
using ObjectNamer = std::function<std::string(const platform::automation::AutomationObject&)>;

/// Converts a script argument: strings, booleans and null as they are; numbers as doubles;
/// {"i2": n}, {"i4": n}, {"r8": x}, {"date": "YYYY-MM-DD[ HH:MM:SS]"}, {"empty": true};
/// {"collection": [...]}; arrays as zero-based one-dimensional arrays; {"array2": [[...], ...]}
/// as a two-dimensional array of rows; {"ref": "name"} as an object made earlier;
/// {"recordset": "select ..."} as the read-only recordset of a query on the current region's
/// tabular database (the database's error names a query it cannot run). Throws
/// AutomationError 0x80070057 naming what it could not read.
platform::automation::Variant variantFromJson(const nlohmann::ordered_json& value,
                                              const ObjectLookup& lookup);

/// Converts a result: empty and Null as null, numbers and strings as they are, dates as
/// {"date": ...}, arrays as (nested) arrays, collections as {"collection": [...]}, objects as
/// {"object": class name, "ref": script name if it has one}.
nlohmann::ordered_json variantToJson(const platform::automation::Variant& value,
                                     const ObjectNamer& namer);

} // namespace brevant::app
