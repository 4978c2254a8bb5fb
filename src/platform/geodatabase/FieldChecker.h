#pragma once

#include "platform/geodatabase/Fields.h"
#include "platform/geodatabase/Workspace.h"

#include <string>
#include <vector>

namespace brevant::platform::geodatabase {

/// A field the checker had to rename for the target workspace.
struct FieldRename {
    int index = 0;
    std::string from;
    std::string to;
};

struct FieldCheck {
    Fields fields;
    std::vector<FieldRename> renamed;
};

/// Makes a field list valid for a target workspace before a conversion writes it. A shapefile
/// folder allows names of at most 10 letters, digits and underscores starting with a letter;
/// every workspace needs names that differ without regard to case. Invalid names are fixed
/// (characters replaced, truncated, numbered to stay unique) and reported; text longer than a
/// shapefile can hold is shortened to 254.
FieldCheck checkFields(const Fields& fields, Workspace::Kind target);

} // namespace brevant::platform::geodatabase
