#include "layout/IdentifierClauses.h"

#include "platform/tabular/Recordset.h"

namespace brevant::layout {

void forEachIdentifierClause(platform::tabular::Recordset& records,
                             const std::function<void(const std::string&)>& select)
{
    if (records.recordCount() < 1) {
        return;
    }
    records.moveFirst();
    std::string list;
    int count = 0;
    const auto flush = [&] {
        select("OBJECTID In (" + list + ")");
        list.clear();
        count = 0;
    };
    while (true) {
        if (count > 0) {
            list += ',';
        }
        list += records.value(0).toString();
        ++count;
        records.moveNext();
        if (records.eof()) {
            break;
        }
        if (count >= kIdentifiersPerClause) {
            flush();
        }
    }
    flush();
}

} // namespace brevant::layout
