#pragma once

#include "platform/ui/UserPrompts.h"

#include <cstdint>
#include <deque>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace brevant::platform::ui {

/// Prompts that never block. Every prompt is recorded in order (and may be echoed to a stream);
/// answers come from one queue shared by all kinds of prompt:
/// - a message box with more than an OK button takes the next answer, which names one of its
///   buttons ("OK", "Cancel", "Yes", "No", any case); with none queued it answers with the first
///   button (OK or Yes). An OK-only box takes no answer.
/// - an input box takes the next answer as typed text;
/// - a colour dialog takes "#RRGGBB", a decimal RGB value, or "OK" for the colour it opened on;
/// - a file dialog takes a path; a relative one lies in the start folder, and a saved name
///   without an extension gets the requested one.
/// "Cancel" (any case), and an empty queue, cancel every prompt but a message box; an empty
/// answer also cancels a colour or file dialog. An answer that does not fit its prompt throws
/// std::invalid_argument, because the script has lost step with the prompts.
class ScriptedPrompts : public UserPrompts {
public:
    struct Message {
        std::string title;
        std::string text;
        MessageButtons buttons = MessageButtons::Ok;
    };
    struct InputRequest {
        std::string prompt;
        std::string title;
        std::string defaultValue;
    };
    struct ColourRequest {
        RgbValue preset = 0;
        ColourDialogFlags flags = ColourDialogFlags::None;
        std::string title;
    };
    /// One call on a progress dialog: the text of a title or message, the number of a step
    /// count or position.
    struct ProgressCall {
        enum class Kind { Show, Title, Message, StepCount, Position, Advance, Close };
        Kind kind;
        std::string text;
        std::int32_t value = 0;

        bool operator==(const ProgressCall&) const = default;
    };

    ScriptedPrompts();

    MessageResult messageBox(const std::string& text, const std::string& title,
                             MessageButtons buttons) override;
    std::optional<std::string> inputBox(const std::string& prompt, const std::string& title,
                                        const std::string& defaultValue) override;
    std::optional<RgbValue> colourDialog(RgbValue preset, ColourDialogFlags flags,
                                         const std::string& title) override;
    std::optional<std::string> fileDialog(const FileDialogRequest& request) override;
    /// A dialog that records its calls here; it may outlive these prompts.
    std::unique_ptr<ProgressDialog> progressDialog() override;

    /// Queues an answer for the next prompt that takes one.
    void queueAnswer(std::string answer) { m_answers.push_back(std::move(answer)); }
    /// Answers queued and not yet taken.
    std::size_t pendingAnswers() const { return m_answers.size(); }

    /// Message boxes shown since the last call, in order; clears them.
    std::vector<Message> takeMessages();
    const std::vector<Message>& messages() const { return m_messages; }
    const std::vector<InputRequest>& inputBoxes() const { return m_inputBoxes; }
    const std::vector<ColourRequest>& colourDialogs() const { return m_colourDialogs; }
    const std::vector<FileDialogRequest>& fileDialogs() const { return m_fileDialogs; }
    /// Calls on every progress dialog made here, in order.
    const std::vector<ProgressCall>& progressCalls() const { return *m_progressCalls; }

    /// Echoes every prompt and its answer to stderr as "TITLE: text" as it is shown.
    void setEcho(bool echo);
    /// Echoes to `out` (not owned; nullptr for no echo).
    void setEcho(std::ostream* out) { m_echo = out; }

protected:
    /// Writes one echoed line, newline included, to the echo stream.
    virtual void writeEcho(const std::string& line);
    std::ostream* echoStream() const { return m_echo; }

private:
    /// The next answer, or nullopt when the queue is empty.
    std::optional<std::string> nextAnswer();
    void echo(const std::string& title, const std::string& text, const std::string& answer);

    std::deque<std::string> m_answers;
    std::vector<Message> m_messages;
    std::vector<InputRequest> m_inputBoxes;
    std::vector<ColourRequest> m_colourDialogs;
    std::vector<FileDialogRequest> m_fileDialogs;
    std::shared_ptr<std::vector<ProgressCall>> m_progressCalls;
    std::ostream* m_echo = nullptr;
};

} // namespace brevant::platform::ui
