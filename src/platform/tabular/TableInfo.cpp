#include "platform/tabular/TableInfo.h"

#include "platform/automation/CaseInsensitive.h"

namespace brevant::platform::tabular {

const ColumnInfo* TableInfo::column(std::string_view columnName) const
{
    for (const auto& c : columns) {
        if (automation::equalsIgnoreCase(c.name, columnName)) {
            return &c;
        }
    }
    return nullptr;
}

} // namespace brevant::platform::tabular
