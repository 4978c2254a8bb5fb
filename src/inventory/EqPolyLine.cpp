#include "inventory/EqPolyLine.h"

#include "context/EqShape.h"
#include "context/ErrorTrap.h"
#include "platform/automation/ErrorNumbers.h"

namespace brevant::inventory {

EqPolyLine::EqPolyLine()
{
    context::runTrapped(" EqPoint", platform::automation::LibraryCode::LineClassInit,
                        [] { context::openStudyRegion(true); });
}

const platform::automation::MemberTable* EqPolyLine::members() const
{
    static const platform::automation::MemberTable table = [] {
        platform::automation::MemberTable t("EqPolyLine");
        addMapProperty(t);
        return t;
    }();
    return &table;
}

} // namespace brevant::inventory
