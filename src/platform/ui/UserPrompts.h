#pragma once

#include "platform/ui/ProgressDialog.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace brevant::platform::ui {

enum class MessageButtons { Ok, OkCancel, YesNo, YesNoCancel };
enum class MessageResult { Ok, Cancel, Yes, No };

/// A colour as the platform stores it (carto::RgbColor::rgb): red in the low byte, then green,
/// then blue (0x0000FF is red, 0xFF0000 blue).
using RgbValue = std::int32_t;

/// Options of the colour dialog, as bits that combine with `|` (3 = preset and full dialog).
enum class ColourDialogFlags : std::uint32_t {
    None = 0,
    /// Open on the preset colour; without it the dialog opens on black.
    PresetColour = 1,
    /// Open with the custom-colour part expanded.
    FullOpen = 2,
};

constexpr ColourDialogFlags operator|(ColourDialogFlags a, ColourDialogFlags b)
{
    return static_cast<ColourDialogFlags>(static_cast<std::uint32_t>(a) |
                                          static_cast<std::uint32_t>(b));
}

/// True when every bit of `flag` is set in `flags`.
constexpr bool hasFlag(ColourDialogFlags flags, ColourDialogFlags flag)
{
    return (static_cast<std::uint32_t>(flags) & static_cast<std::uint32_t>(flag)) ==
           static_cast<std::uint32_t>(flag);
}

enum class FileDialogMode { Open, Save };

/// What a file dialog asks for.
struct FileDialogRequest {
    FileDialogMode mode = FileDialogMode::Open;
    /// Folder the dialog opens in; empty for the current folder.
    std::string startFolder;
    /// Window title; empty for the plain "Open" or "Save As".
    std::string title;
    /// Extension without the dot ("shp"): the files listed, and the one added to a saved name
    /// that has none. Empty for any file.
    std::string extension;
    /// Name filter in the form "Shapefiles (*.shp)"; when empty it follows the extension.
    std::string filter;
};

/// The modal questions the library asks the user: message boxes, input boxes, colour and file
/// dialogs, and the progress window of long operations. The desktop shows dialogs; the command
/// line prints and answers from a queue; tests script them.
class UserPrompts {
public:
    virtual ~UserPrompts() = default;

    /// Shows a message with a title and buttons; returns the button chosen.
    virtual MessageResult messageBox(const std::string& text, const std::string& title,
                                     MessageButtons buttons = MessageButtons::Ok) = 0;
    /// Asks for a line of text; nullopt when the user cancels (the library reads that as an
    /// empty answer).
    virtual std::optional<std::string> inputBox(const std::string& prompt, const std::string& title,
                                                const std::string& defaultValue = {}) = 0;
    /// Asks for a colour; nullopt when the user cancels.
    virtual std::optional<RgbValue> colourDialog(RgbValue preset, ColourDialogFlags flags,
                                                 const std::string& title) = 0;
    /// Asks for a file to open or a name to save under; the full path, or nullopt when the user
    /// cancels.
    virtual std::optional<std::string> fileDialog(const FileDialogRequest& request) = 0;
    /// A new progress window, hidden until `show`.
    virtual std::unique_ptr<ProgressDialog> progressDialog() = 0;
};

/// Installs the prompts of the process (replacing earlier ones).
void installUserPrompts(std::shared_ptr<UserPrompts> prompts);
/// The installed prompts; without any installed, scripted prompts that answer nothing.
UserPrompts& userPrompts();

} // namespace brevant::platform::ui
