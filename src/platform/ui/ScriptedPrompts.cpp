#include "platform/ui/ScriptedPrompts.h"

#include "platform/automation/CaseInsensitive.h"

#include <iostream>
#include <utility>

namespace brevant::platform::ui {

namespace {
std::shared_ptr<UserPrompts>& installed()
{
    static std::shared_ptr<UserPrompts> prompts;
    return prompts;
}
} // namespace

void installUserPrompts(std::shared_ptr<UserPrompts> prompts)
{
    installed() = std::move(prompts);
}

UserPrompts& userPrompts()
{
    if (!installed()) {
        installed() = std::make_shared<ScriptedPrompts>();
    }
    return *installed();
}

MessageResult ScriptedPrompts::messageBox(const std::string& text, const std::string& title,
                                          MessageButtons buttons)
{
    m_messages.push_back(Message{title, text});
    if (m_echo) {
        std::cerr << title << ": " << text << '\n';
    }
    const bool yesNo = buttons == MessageButtons::YesNo || buttons == MessageButtons::YesNoCancel;
    MessageResult result = yesNo ? MessageResult::Yes : MessageResult::Ok;
    if (buttons != MessageButtons::Ok && !m_answers.empty()) {
        const std::string answer = m_answers.front();
        m_answers.pop_front();
        if (automation::equalsIgnoreCase(answer, "Cancel")) {
            result = MessageResult::Cancel;
        } else if (automation::equalsIgnoreCase(answer, "No")) {
            result = MessageResult::No;
        }
    }
    return result;
}

std::optional<std::string> ScriptedPrompts::inputBox(const std::string& prompt,
                                                     const std::string& title,
                                                     const std::string& /*defaultValue*/)
{
    if (m_echo) {
        std::cerr << title << ": " << prompt << '\n';
    }
    if (m_answers.empty()) {
        return std::nullopt;
    }
    std::string answer = std::move(m_answers.front());
    m_answers.pop_front();
    return answer;
}

std::vector<ScriptedPrompts::Message> ScriptedPrompts::takeMessages()
{
    return std::exchange(m_messages, {});
}

} // namespace brevant::platform::ui
