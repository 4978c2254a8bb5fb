#include "platform/ui/ConsoleProgressDialog.h"

#include <cstdio>
#include <ostream>
#include <unistd.h>
#include <utility>

namespace brevant::platform::ui {

namespace {
constexpr int kBarWidth = 20;
// Erases the rest of the line, so a shorter text leaves nothing of a longer one.
constexpr const char* kClearToEnd = "\033[K";

std::string label(const ProgressState& state)
{
    std::string text = state.title;
    if (!state.message.empty()) {
        text += (text.empty() ? "" : ": ") + state.message;
    }
    return text;
}

std::string barText(const ProgressState& state)
{
    std::string text = label(state);
    if (state.busy()) {
        return text;
    }
    const int filled =
        static_cast<int>(static_cast<long long>(kBarWidth) * state.position / state.steps);
    text += " [" + std::string(filled, '#') + std::string(kBarWidth - filled, '-') + "] " +
            std::to_string(state.position) + "/" + std::to_string(state.steps);
    return text;
}
} // namespace

ProgressStyle stderrProgressStyle()
{
    return isatty(fileno(stderr)) ? ProgressStyle::Bar : ProgressStyle::Lines;
}

ConsoleProgressDialog::ConsoleProgressDialog(std::ostream& out, ProgressStyle style,
                                             std::shared_ptr<std::string> onScreen)
    : m_out(out), m_style(style), m_onScreen(std::move(onScreen))
{
}

ConsoleProgressDialog::~ConsoleProgressDialog()
{
    // A dialog released without close must not leave the terminal mid-line.
    close();
}

std::string ConsoleProgressDialog::describe(const ProgressState& state)
{
    std::string text = label(state);
    if (!state.busy()) {
        text += " (" + std::to_string(state.position) + "/" + std::to_string(state.steps) + ")";
    }
    return text;
}

void ConsoleProgressDialog::show()
{
    m_state.visible = true;
    update();
}

void ConsoleProgressDialog::setTitle(const std::string& title)
{
    m_state.title = title;
    if (m_style == ProgressStyle::Bar) {
        update();
    }
}

void ConsoleProgressDialog::setMessage(const std::string& message)
{
    m_state.message = message;
    update();
}

void ConsoleProgressDialog::setStepCount(std::int32_t steps)
{
    m_state.setStepCount(steps);
    if (m_style == ProgressStyle::Bar) {
        update();
    }
}

void ConsoleProgressDialog::setPosition(std::int32_t position)
{
    m_state.setPosition(position);
    update();
}

void ConsoleProgressDialog::advance()
{
    m_state.advance();
    update();
}

void ConsoleProgressDialog::close()
{
    if (!m_state.visible) {
        return;
    }
    m_state.visible = false;
    if (m_style == ProgressStyle::Bar && !m_lastLine.empty()) {
        m_out << '\n' << std::flush;
        m_onScreen->clear();
    }
    m_lastLine.clear();
}

// Lines are written for what a reader of a log follows: a new message or a new step. A title
// or step count on its own waits for the next of those.
void ConsoleProgressDialog::update()
{
    if (!m_state.visible || (m_state.title.empty() && m_state.message.empty())) {
        return;
    }
    if (m_style == ProgressStyle::Bar) {
        const std::string line = barText(m_state);
        m_out << '\r' << line << kClearToEnd << std::flush;
        m_lastLine = line;
        *m_onScreen = line;
        return;
    }
    const std::string line = describe(m_state);
    if (line != m_lastLine) {
        m_out << line << '\n' << std::flush;
        m_lastLine = line;
    }
}

} // namespace brevant::platform::ui
