#pragma once

#include "platform/automation/AutomationObject.h"
#include "platform/automation/MemberTable.h"
#include "platform/automation/Variant.h"

#include <cstdint>
#include <string>

namespace brevant::exchange {

/// The toolbar command object ("Region &Wizard") the host places on its toolbar or menus. It
/// answers the host framework's command interface; clicking it does nothing here, as the host
/// attaches what the wizard does.
class EqOpenDocument : public platform::automation::AutomationObject {
public:
    /// Opens the study-region context (see context::Init); throws when it fails, so a failing
    /// initialiser fails the creation of the object.
    EqOpenDocument();

    std::string_view className() const override { return "EqOpenDocument"; }
    const platform::automation::MemberTable* members() const override;

    // The command interface, in its order. None of them traps: they cannot fail.
    bool Enabled() const { return true; }
    bool Checked() const { return false; }
    std::string Name() const { return kCaption; }
    std::string Caption() const { return kCaption; }
    std::string Tooltip() const { return {}; }
    std::string Message() const { return {}; }
    std::string HelpFile() const { return {}; }
    int32_t HelpContextID() const { return 0; }
    /// No bitmap: a zero handle.
    int32_t Bitmap() const { return 0; }
    std::string Category() const { return "Test"; }
    /// Keeps the host application the framework hands over, until this object goes.
    void OnCreate(const platform::automation::Variant& hook) { m_application = hook; }
    void OnClick() {}

    /// The application reference OnCreate kept (Empty before it).
    const platform::automation::Variant& application() const { return m_application; }

private:
    // The ampersand marks W as the access key.
    static constexpr const char* kCaption = "Region &Wizard";
    platform::automation::Variant m_application;
};

} // namespace brevant::exchange
