#include "host/local/LocalProgressDialog.h"

#include "platform/ui/ProgressDialog.h"
#include "platform/ui/UserPrompts.h"

namespace brevant::host::local {

LocalProgressDialog::LocalProgressDialog() : m_window(platform::ui::userPrompts().progressDialog())
{
}

// A caller that drops the object without closing it still takes the window down.
LocalProgressDialog::~LocalProgressDialog() = default;

void LocalProgressDialog::Show()
{
    m_window->show();
}

void LocalProgressDialog::SetTitle(const std::string& title)
{
    m_window->setTitle(title);
}

void LocalProgressDialog::SetMessage(const std::string& message)
{
    m_window->setMessage(message);
}

void LocalProgressDialog::SetStepCount(int32_t steps)
{
    m_window->setStepCount(steps);
}

void LocalProgressDialog::Advance()
{
    m_window->advance();
}

void LocalProgressDialog::Close()
{
    m_window->close();
}

void LocalProgressDialog::SetPosition(int32_t position)
{
    m_window->setPosition(position);
}

} // namespace brevant::host::local
