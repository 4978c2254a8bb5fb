#pragma once

#include "platform/ui/ProgressDialog.h"
#include "platform/ui/ProgressState.h"

#include <iosfwd>
#include <memory>
#include <string>

namespace brevant::platform::ui {

enum class ProgressStyle {
    /// One line redrawn in place: "Title: message [#####-----] 3/6". For terminals.
    Bar,
    /// A plain line whenever the message or the step changes. For logs and pipes.
    Lines,
};

/// A progress dialog drawn as text on a stream.
class ConsoleProgressDialog : public ProgressDialog {
public:
    /// Draws on `out`, which must outlive the dialog. `onScreen` holds the bar line currently
    /// drawn (empty when none), shared with whoever else writes to the same terminal so they
    /// can write their lines around it.
    ConsoleProgressDialog(std::ostream& out, ProgressStyle style,
                          std::shared_ptr<std::string> onScreen);
    ~ConsoleProgressDialog() override;
    ConsoleProgressDialog(const ConsoleProgressDialog&) = delete;
    ConsoleProgressDialog& operator=(const ConsoleProgressDialog&) = delete;

    void show() override;
    void setTitle(const std::string& title) override;
    void setMessage(const std::string& message) override;
    void setStepCount(std::int32_t steps) override;
    void setPosition(std::int32_t position) override;
    void advance() override;
    void close() override;

    /// The text of the current state, without the bar: "Title: message (3/6)".
    static std::string describe(const ProgressState& state);

private:
    void update();

    std::ostream& m_out;
    ProgressStyle m_style;
    std::shared_ptr<std::string> m_onScreen;
    ProgressState m_state;
    std::string m_lastLine;
};

/// Bar on a terminal, lines otherwise, for the standard error stream.
ProgressStyle stderrProgressStyle();

} // namespace brevant::platform::ui
