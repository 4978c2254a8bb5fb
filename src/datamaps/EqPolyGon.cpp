#include "datamaps/EqPolyGon.h"

#include "context/EqShape.h"
#include "context/ErrorTrap.h"
#include "platform/automation/ErrorNumbers.h"

namespace brevant::datamaps {

EqPolyGon::EqPolyGon()
{
    context::runTrapped(" EqPolygon ", platform::automation::LibraryCode::ClassInit,
                        [] { context::openStudyRegion(true); });
}

const platform::automation::MemberTable* EqPolyGon::members() const
{
    static const platform::automation::MemberTable table = [] {
        platform::automation::MemberTable t("EqPolyGon");
        addMapProperty(t);
        return t;
    }();
    return &table;
}

} // namespace brevant::datamaps
