#include "platform/ui/DialogScript.h"

namespace brevant::platform::ui {

namespace {
std::shared_ptr<DialogScript>& installed()
{
    static std::shared_ptr<DialogScript> script;
    return script;
}
} // namespace

void DialogScript::queue(std::vector<DialogAction> actions)
{
    for (auto& action : actions) {
        m_actions.push_back(std::move(action));
    }
}

std::optional<DialogAction> DialogScript::next()
{
    if (m_actions.empty()) {
        return std::nullopt;
    }
    DialogAction action = std::move(m_actions.front());
    m_actions.pop_front();
    return action;
}

std::optional<std::optional<RgbValue>> DialogScript::takeColourAnswer()
{
    auto answer = m_colour;
    m_colour.reset();
    return answer;
}

std::vector<DialogReport> DialogScript::takeReports()
{
    std::vector<DialogReport> taken;
    taken.swap(m_reports);
    return taken;
}

void installDialogScript(std::shared_ptr<DialogScript> script)
{
    installed() = std::move(script);
}

DialogScript* dialogScript()
{
    return installed().get();
}

} // namespace brevant::platform::ui
