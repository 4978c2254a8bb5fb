#include "inventory/EqPoint.h"

#include "context/EqShape.h"
#include "context/ErrorTrap.h"
#include "platform/automation/ErrorNumbers.h"

namespace brevant::inventory {

EqPoint::EqPoint()
{
    context::runTrapped(" EqPoint", platform::automation::LibraryCode::ClassInit,
                        [] { context::openStudyRegion(true); });
}

const platform::automation::MemberTable* EqPoint::members() const
{
    static const platform::automation::MemberTable table = [] {
        platform::automation::MemberTable t("EqPoint");
        addMapProperty(t);
        return t;
    }();
    return &table;
}

} // namespace brevant::inventory
