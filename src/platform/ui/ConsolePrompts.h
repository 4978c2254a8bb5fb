#pragma once

#include "platform/ui/ConsoleProgressDialog.h"
#include "platform/ui/ScriptedPrompts.h"

#include <iosfwd>
#include <memory>
#include <string>

namespace brevant::platform::ui {

/// The prompts of the command line: every prompt is printed as "TITLE: text" (with the answer
/// after " -> " where one was taken) and recorded as by ScriptedPrompts, whose queue answers
/// it, so nothing ever waits for a keyboard. Progress dialogs draw on the progress stream
/// and are not recorded.
class ConsolePrompts : public ScriptedPrompts {
public:
    /// Prints prompts on `messages` and progress on `progress`; both must outlive the prompts
    /// and their dialogs.
    ConsolePrompts(std::ostream& messages, std::ostream& progress, ProgressStyle style);
    /// Both on stderr; progress as a bar when stderr is a terminal, as lines otherwise.
    ConsolePrompts();

    std::unique_ptr<ProgressDialog> progressDialog() override;

protected:
    void writeEcho(const std::string& line) override;

private:
    std::ostream& m_progress;
    ProgressStyle m_style;
    std::shared_ptr<std::string> m_barOnScreen = std::make_shared<std::string>();
};

} // namespace brevant::platform::ui
