#include "exchange/EqOpenDocument.h"

#include "context/EqShape.h"
#include "platform/automation/ErrorNumbers.h"

namespace brevant::exchange {

EqOpenDocument::EqOpenDocument()
{
    // No trap of its own: an error of Init reaches the creator as Init raised it.
    context::openStudyRegion(true);
}

const platform::automation::MemberTable* EqOpenDocument::members() const
{
    static const platform::automation::MemberTable table = [] {
        platform::automation::MemberTable t("EqOpenDocument");
        return t;
    }();
    return &table;
}

} // namespace brevant::exchange
