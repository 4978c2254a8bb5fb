#include "datamaps/EqDataMaps.h"

#include "context/EqShape.h"
#include "platform/automation/ErrorNumbers.h"

namespace brevant::datamaps {

EqDataMaps::EqDataMaps()
{
    // No trap of its own: an error of Init reaches the creator as Init raised it.
    context::openStudyRegion(true);
}

const platform::automation::MemberTable* EqDataMaps::members() const
{
    static const platform::automation::MemberTable table = [] {
        platform::automation::MemberTable t("EqDataMaps");
        return t;
    }();
    return &table;
}

} // namespace brevant::datamaps
