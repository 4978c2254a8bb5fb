#include "exchange/RegionExpImp.h"

#include "context/EqShape.h"
#include "context/ErrorTrap.h"
#include "platform/automation/ErrorNumbers.h"

namespace brevant::exchange {

RegionExpImp::RegionExpImp()
{
    context::runTrapped(" RegionExpImp", platform::automation::LibraryCode::ClassInit,
                        [] { context::openStudyRegion(false); });
}

const platform::automation::MemberTable* RegionExpImp::members() const
{
    static const platform::automation::MemberTable table = [] {
        platform::automation::MemberTable t("RegionExpImp");
        return t;
    }();
    return &table;
}

} // namespace brevant::exchange
