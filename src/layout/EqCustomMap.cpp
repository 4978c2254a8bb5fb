#include "layout/EqCustomMap.h"

#include "context/EqShape.h"
#include "context/ErrorTrap.h"
#include "platform/automation/ErrorNumbers.h"

namespace brevant::layout {

EqCustomMap::EqCustomMap()
{
    context::runTrapped(" EqCustomMap", platform::automation::LibraryCode::ClassInit,
                        [] { context::openStudyRegion(true); });
}

const platform::automation::MemberTable* EqCustomMap::members() const
{
    static const platform::automation::MemberTable table = [] {
        platform::automation::MemberTable t("EqCustomMap");
        return t;
    }();
    return &table;
}

} // namespace brevant::layout
