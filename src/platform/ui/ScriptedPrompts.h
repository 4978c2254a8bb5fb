#pragma once

#include "platform/ui/UserPrompts.h"

#include <deque>
#include <string>
#include <vector>

namespace brevant::platform::ui {

/// Prompts that never block: every message is recorded (and may be echoed to a stream), and
/// input boxes take their answers from a queue, cancelling when it is empty. Message boxes
/// answer with the first button (OK or Yes) unless a queued answer names another
/// ("Cancel", "No").
class ScriptedPrompts : public UserPrompts {
public:
    struct Message {
        std::string title;
        std::string text;
    };

    MessageResult messageBox(const std::string& text, const std::string& title,
                             MessageButtons buttons) override;
    std::optional<std::string> inputBox(const std::string& prompt, const std::string& title,
                                        const std::string& defaultValue) override;

    /// Queues an answer for the next input box or message box.
    void queueAnswer(std::string answer) { m_answers.push_back(std::move(answer)); }
    /// Messages shown since the last call, in order; clears them.
    std::vector<Message> takeMessages();
    const std::vector<Message>& messages() const { return m_messages; }
    /// Echoes every message to stderr as "TITLE: text" as it is shown.
    void setEcho(bool echo) { m_echo = echo; }

private:
    std::deque<std::string> m_answers;
    std::vector<Message> m_messages;
    bool m_echo = false;
};

} // namespace brevant::platform::ui
