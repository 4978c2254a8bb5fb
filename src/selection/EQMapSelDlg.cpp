#include "selection/EQMapSelDlg.h"

#include "context/EqShape.h"
#include "context/ErrorTrap.h"
#include "platform/automation/ErrorNumbers.h"

namespace brevant::selection {

EQMapSelDlg::EQMapSelDlg()
{
    context::runTrapped(" EQMapSelDlg", platform::automation::LibraryCode::ClassInit,
                        [] { context::openStudyRegion(false); });
}

const platform::automation::MemberTable* EQMapSelDlg::members() const
{
    static const platform::automation::MemberTable table = [] {
        platform::automation::MemberTable t("EQMapSelDlg");
        return t;
    }();
    return &table;
}

} // namespace brevant::selection
