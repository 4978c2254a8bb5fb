#pragma once

#include <QCursor>
#include <QIcon>
#include <string>

namespace brevant::selection {

// The pictures of the map selection form, drawn here so the library ships no image files.

/// The cursor of the given name: "DEFAULT", "IDENTIFY", "PAN", "PANMOVE", "SELECTFEATURES",
/// "SELECTFEATURESMOVE", "ZOOMIN", "ZOOMINMOVE", "ZOOMOUT" or "ZOOMOUTMOVE". Throws
/// std::invalid_argument for any other name.
QCursor selectionCursor(const std::string& name);

/// The toolbar image of a tool by its key ("ZoomIn" ... "AddData"); an empty icon for an
/// unknown key.
QIcon toolIcon(const std::string& key);

} // namespace brevant::selection
