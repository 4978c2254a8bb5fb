#include "platform/ui/ScriptedPrompts.h"

#include "platform/ui/DialogScript.h"

#include "platform/automation/CaseInsensitive.h"

#include <charconv>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <utility>

namespace brevant::platform::ui {

namespace {

using automation::equalsIgnoreCase;
using Kind = ScriptedPrompts::ProgressCall::Kind;

bool isCancel(const std::string& answer)
{
    return equalsIgnoreCase(answer, "Cancel");
}

std::string buttonName(MessageResult result)
{
    switch (result) {
    case MessageResult::Ok:
        return "OK";
    case MessageResult::Cancel:
        return "Cancel";
    case MessageResult::Yes:
        return "Yes";
    case MessageResult::No:
        return "No";
    }
    return {};
}

std::vector<MessageResult> buttonsOf(MessageButtons buttons)
{
    switch (buttons) {
    case MessageButtons::Ok:
        return {MessageResult::Ok};
    case MessageButtons::OkCancel:
        return {MessageResult::Ok, MessageResult::Cancel};
    case MessageButtons::YesNo:
        return {MessageResult::Yes, MessageResult::No};
    case MessageButtons::YesNoCancel:
        return {MessageResult::Yes, MessageResult::No, MessageResult::Cancel};
    }
    return {MessageResult::Ok};
}

std::string htmlColour(RgbValue rgb)
{
    char text[8];
    std::snprintf(text, sizeof text, "#%02X%02X%02X", rgb & 0xFF, (rgb >> 8) & 0xFF,
                  (rgb >> 16) & 0xFF);
    return text;
}

std::optional<RgbValue> parseColour(const std::string& answer)
{
    const char* first = answer.data();
    const char* last = first + answer.size();
    std::uint32_t value = 0;
    if (answer.size() == 7 && answer[0] == '#') {
        const auto [end, error] = std::from_chars(first + 1, last, value, 16);
        if (error != std::errc() || end != last) {
            return std::nullopt;
        }
        // "#RRGGBB" lists red first; the stored value keeps red in the low byte.
        return static_cast<RgbValue>(((value >> 16) & 0xFFu) | (value & 0xFF00u) |
                                     ((value & 0xFFu) << 16));
    }
    const auto [end, error] = std::from_chars(first, last, value, 10);
    if (answer.empty() || error != std::errc() || end != last || value > 0xFFFFFFu) {
        return std::nullopt;
    }
    return static_cast<RgbValue>(value);
}

class ScriptedProgressDialog : public ProgressDialog {
public:
    explicit ScriptedProgressDialog(std::shared_ptr<std::vector<ScriptedPrompts::ProgressCall>> log)
        : m_log(std::move(log))
    {
    }

    void show() override { record(Kind::Show); }
    void setTitle(const std::string& title) override { record(Kind::Title, title); }
    void setMessage(const std::string& message) override { record(Kind::Message, message); }
    void setStepCount(std::int32_t steps) override { record(Kind::StepCount, {}, steps); }
    void setPosition(std::int32_t position) override { record(Kind::Position, {}, position); }
    void advance() override { record(Kind::Advance); }
    void close() override { record(Kind::Close); }

private:
    void record(Kind kind, std::string text = {}, std::int32_t value = 0)
    {
        m_log->push_back({kind, std::move(text), value});
    }

    std::shared_ptr<std::vector<ScriptedPrompts::ProgressCall>> m_log;
};

} // namespace

ScriptedPrompts::ScriptedPrompts() : m_progressCalls(std::make_shared<std::vector<ProgressCall>>())
{
}

MessageResult ScriptedPrompts::messageBox(const std::string& text, const std::string& title,
                                          MessageButtons buttons)
{
    m_messages.push_back(Message{title, text, buttons});
    const auto offered = buttonsOf(buttons);
    MessageResult result = offered.front();
    if (offered.size() > 1) {
        if (const auto answer = nextAnswer()) {
            std::string names;
            bool found = false;
            for (const MessageResult button : offered) {
                names += (names.empty() ? "" : ", ") + buttonName(button);
                if (equalsIgnoreCase(*answer, buttonName(button))) {
                    result = button;
                    found = true;
                }
            }
            if (!found) {
                throw std::invalid_argument("the answer \"" + *answer + "\" to the message \"" +
                                            text + "\" is none of its buttons (" + names + ")");
            }
        }
    }
    echo(title, text, offered.size() > 1 ? buttonName(result) : std::string());
    return result;
}

std::optional<std::string> ScriptedPrompts::inputBox(const std::string& prompt,
                                                     const std::string& title,
                                                     const std::string& defaultValue)
{
    m_inputBoxes.push_back(InputRequest{prompt, title, defaultValue});
    auto answer = nextAnswer();
    if (answer && isCancel(*answer)) {
        answer.reset();
    }
    echo(title, prompt, answer ? "\"" + *answer + "\"" : "(cancelled)");
    return answer;
}

std::optional<RgbValue> ScriptedPrompts::colourDialog(RgbValue preset, ColourDialogFlags flags,
                                                      const std::string& title)
{
    m_colourDialogs.push_back(ColourRequest{preset, flags, title});
    // A window's script answers the colour dialogs it opens before the answer queue does.
    if (auto* script = dialogScript()) {
        if (const auto scripted = script->takeColourAnswer()) {
            echo(title, "colour", *scripted ? std::to_string(**scripted) : "(cancelled)");
            return *scripted;
        }
    }
    const auto answer = nextAnswer();
    std::optional<RgbValue> colour;
    if (answer && !answer->empty() && !isCancel(*answer)) {
        if (equalsIgnoreCase(*answer, "OK")) {
            colour = hasFlag(flags, ColourDialogFlags::PresetColour) ? preset : 0;
        } else {
            colour = parseColour(*answer);
            if (!colour) {
                throw std::invalid_argument("the answer \"" + *answer +
                                            "\" to the colour dialog \"" + title +
                                            "\" is not a colour (#RRGGBB or an RGB value)");
            }
        }
    }
    echo(title, "colour " + htmlColour(preset), colour ? htmlColour(*colour) : "(cancelled)");
    return colour;
}

std::optional<std::string> ScriptedPrompts::fileDialog(const FileDialogRequest& request)
{
    m_fileDialogs.push_back(request);
    const auto answer = nextAnswer();
    std::optional<std::string> chosen;
    if (answer && !answer->empty() && !isCancel(*answer)) {
        std::filesystem::path path(*answer);
        if (path.is_relative() && !request.startFolder.empty()) {
            path = std::filesystem::path(request.startFolder) / path;
        }
        if (request.mode == FileDialogMode::Save && !request.extension.empty() &&
            !path.has_extension()) {
            path += "." + request.extension;
        }
        chosen = path.string();
    }
    const std::string what = request.mode == FileDialogMode::Open ? "open" : "save";
    const std::string title = request.title.empty()
                                  ? (request.mode == FileDialogMode::Open ? "Open" : "Save As")
                                  : request.title;
    echo(title, what + " file in " + request.startFolder, chosen ? *chosen : "(cancelled)");
    return chosen;
}

std::unique_ptr<ProgressDialog> ScriptedPrompts::progressDialog()
{
    return std::make_unique<ScriptedProgressDialog>(m_progressCalls);
}

std::vector<ScriptedPrompts::Message> ScriptedPrompts::takeMessages()
{
    return std::exchange(m_messages, {});
}

void ScriptedPrompts::setEcho(bool echo)
{
    m_echo = echo ? &std::cerr : nullptr;
}

std::optional<std::string> ScriptedPrompts::nextAnswer()
{
    if (m_answers.empty()) {
        return std::nullopt;
    }
    std::string answer = std::move(m_answers.front());
    m_answers.pop_front();
    return answer;
}

void ScriptedPrompts::echo(const std::string& title, const std::string& text,
                           const std::string& answer)
{
    if (m_echo) {
        writeEcho(title + ": " + text + (answer.empty() ? "" : " -> " + answer) + "\n");
    }
}

void ScriptedPrompts::writeEcho(const std::string& line)
{
    *m_echo << line << std::flush;
}

} // namespace brevant::platform::ui
