#include "exchange/EqOpenDocument.h"

#include "context/EqShape.h"

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
        t.property("Enabled", &EqOpenDocument::Enabled)
            .property("Checked", &EqOpenDocument::Checked)
            .property("Name", &EqOpenDocument::Name)
            .property("Caption", &EqOpenDocument::Caption)
            .property("Tooltip", &EqOpenDocument::Tooltip)
            .property("Message", &EqOpenDocument::Message)
            .property("HelpFile", &EqOpenDocument::HelpFile)
            .property("HelpContextID", &EqOpenDocument::HelpContextID)
            .property("Bitmap", &EqOpenDocument::Bitmap)
            .property("Category", &EqOpenDocument::Category)
            .method("OnCreate", &EqOpenDocument::OnCreate)
            .method("OnClick", &EqOpenDocument::OnClick);
        return t;
    }();
    return &table;
}

} // namespace brevant::exchange
