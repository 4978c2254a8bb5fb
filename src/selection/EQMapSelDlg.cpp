#include "selection/EQMapSelDlg.h"

#include "context/EqShape.h"
#include "context/ErrorTrap.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/ui/qt/ModalWindow.h"
#include "selection/frmFl.h"

namespace brevant::selection {

EQMapSelDlg::EQMapSelDlg()
{
    context::runTrapped(" EQMapSelDlg", platform::automation::LibraryCode::ClassInit,
                        [] { context::openStudyRegion(false); });
}

void EQMapSelDlg::GetflStudyCaseId(int16_t& StudyCaseId)
{
    // The host is told of a failure by the error log only, as with every selection method.
    context::runLogged(" GetflStudyCaseId", platform::automation::LibraryCode::Procedure, [&] {
        StudyCaseId = 0;
        platform::ui::qt::ensureWidgetApplication();
        auto& form = frmFl::instance();
        form.showModal();
        StudyCaseId = form.m_StudyCaseId;
    });
}

const platform::automation::MemberTable* EQMapSelDlg::members() const
{
    static const platform::automation::MemberTable table = [] {
        platform::automation::MemberTable t("EQMapSelDlg");
        t.method("GetflStudyCaseId", &EQMapSelDlg::GetflStudyCaseId);
        return t;
    }();
    return &table;
}

} // namespace brevant::selection
