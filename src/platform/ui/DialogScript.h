#pragma once

#include "platform/ui/UserPrompts.h"

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace brevant::platform::ui {

/// One thing a script does to a window, as a user would.
struct DialogAction {
    enum class Kind {
        Tool,       ///< press a toolbar button by key
        Click,      ///< click the map at a map point
        Drag,       ///< drag on the map from one map point to another
        Move,       ///< move the pointer over the map to a map point
        Press,      ///< press a button
        Select,     ///< select a line of a list by index
        Check,      ///< set a check box
        Text,       ///< replace the text of a text box
        Choose,     ///< choose an entry of a drop-down list by index or text
        Menu,       ///< pick a menu item
        Read,       ///< read a control's text, check mark and enabled state
        Colour,     ///< the answer of the next colour dialog
        Screenshot, ///< save the window as a PNG
        Close,      ///< the window's close box
    };
    Kind kind = Kind::Close;
    /// Control name, toolbar key, menu item, file path or text, as the kind needs.
    std::string name;
    std::string text;
    std::optional<int> index;
    bool flag = false;
    /// Map coordinates: x, y (click, move) or x1, y1, x2, y2 (drag).
    std::vector<double> coordinates;
    /// A colour answer; empty for Cancel.
    std::optional<RgbValue> colour;
    /// The action as the script wrote it, for the report.
    std::string source;
};

/// What one control showed when it was read.
struct ControlReading {
    std::string control;
    std::string text;
    bool checked = false;
    bool enabled = false;
    /// Whether the control is shown (a symbology page, a popup menu).
    bool visible = false;
};

/// One action as it ran: failed actions carry why and changed nothing.
struct ActionOutcome {
    std::string action;
    bool ok = true;
    std::string error;
};

/// How one window went: the form, its caption, the actions run, the values read, and how it
/// closed.
struct DialogReport {
    std::string form;
    std::string caption;
    std::vector<ActionOutcome> actions;
    std::vector<ControlReading> values;
    std::string closed;
    /// The Qt platform the window ran on ("xcb" on an X display, "offscreen" without one).
    std::string platform;
};

/// The actions queued for the windows the library shows, and the reports of the windows shown.
/// Installed by a command line that runs scripts, and by tests; while one is installed every
/// window runs its actions instead of waiting for a user.
class DialogScript {
public:
    /// Queues actions for the next window shown.
    void queue(std::vector<DialogAction> actions);
    /// The next action, or nullopt when the queue has run out.
    std::optional<DialogAction> next();
    std::size_t pending() const { return m_actions.size(); }

    /// Sets the answer of the next colour dialog (empty for Cancel).
    void answerNextColour(std::optional<RgbValue> colour) { m_colour = colour; }
    /// Takes the answer set for the colour dialog, if any.
    std::optional<std::optional<RgbValue>> takeColourAnswer();

    void addReport(DialogReport report) { m_reports.push_back(std::move(report)); }
    /// Windows shown since the last call, in order; clears them.
    std::vector<DialogReport> takeReports();

private:
    std::deque<DialogAction> m_actions;
    std::optional<std::optional<RgbValue>> m_colour;
    std::vector<DialogReport> m_reports;
};

/// Installs the dialog script of the process (null to remove it, so windows wait for a user).
void installDialogScript(std::shared_ptr<DialogScript> script);
/// The installed script, or null.
DialogScript* dialogScript();

} // namespace brevant::platform::ui
