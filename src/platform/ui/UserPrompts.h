#pragma once

#include <memory>
#include <optional>
#include <string>

namespace brevant::platform::ui {

enum class MessageButtons { Ok, OkCancel, YesNo, YesNoCancel };
enum class MessageResult { Ok, Cancel, Yes, No };

/// The modal questions the library asks the user: message boxes and input boxes. The desktop
/// shows dialogs; the command line prints and answers from a queue; tests script them.
class UserPrompts {
public:
    virtual ~UserPrompts() = default;

    /// Shows a message with a title and buttons; returns the button chosen.
    virtual MessageResult messageBox(const std::string& text, const std::string& title,
                                     MessageButtons buttons = MessageButtons::Ok) = 0;
    /// Asks for a line of text; nullopt when the user cancels.
    virtual std::optional<std::string> inputBox(const std::string& prompt, const std::string& title,
                                                const std::string& defaultValue = {}) = 0;
};

/// Installs the prompts of the process (replacing earlier ones).
void installUserPrompts(std::shared_ptr<UserPrompts> prompts);
/// The installed prompts; without any installed, scripted prompts that answer nothing.
UserPrompts& userPrompts();

} // namespace brevant::platform::ui
