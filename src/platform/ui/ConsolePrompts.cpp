#include "platform/ui/ConsolePrompts.h"

#include <iostream>

namespace brevant::platform::ui {

ConsolePrompts::ConsolePrompts(std::ostream& messages, std::ostream& progress, ProgressStyle style)
    : m_progress(progress), m_style(style)
{
    setEcho(&messages);
}

ConsolePrompts::ConsolePrompts() : ConsolePrompts(std::cerr, std::cerr, stderrProgressStyle())
{
}

std::unique_ptr<ProgressDialog> ConsolePrompts::progressDialog()
{
    return std::make_unique<ConsoleProgressDialog>(m_progress, m_style, m_barOnScreen);
}

void ConsolePrompts::writeEcho(const std::string& line)
{
    std::ostream& out = *echoStream();
    if (&out != &m_progress || m_barOnScreen->empty()) {
        ScriptedPrompts::writeEcho(line);
        return;
    }
    // A message shown during a long operation takes the bar's line; the bar follows below.
    out << "\r\033[K" << line << *m_barOnScreen << std::flush;
}

} // namespace brevant::platform::ui
