#pragma once

#include "platform/geodatabase/FieldType.h"

#include <string>

namespace brevant::platform::geodatabase {

/// One field of a table: its name, the alias shown to users (the name when none), its type,
/// for text its length, and the value that new rows take when none is given (empty: none).
struct Field {
    std::string name;
    FieldType type = FieldType::String;
    int length = 0;
    std::string aliasName;
    std::string defaultValue;

    const std::string& alias() const { return aliasName.empty() ? name : aliasName; }
};

} // namespace brevant::platform::geodatabase
