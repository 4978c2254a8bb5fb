#pragma once

#include "platform/carto/Element.h"

#include <filesystem>

namespace brevant::platform::carto {

/// A picture from an image file (BMP, PNG, JPEG) stretched over the element's rectangle.
class PictureElement : public Element {
public:
    std::string_view className() const override { return "PictureElement"; }

    /// Takes the picture of a file; throws PlatformError (53, file not found) when the file is
    /// missing, leaving the element as it was.
    void importPictureFromFile(const std::filesystem::path& file);
    const std::filesystem::path& file() const { return m_file; }
    /// Whether the picture keeps its proportions inside the rectangle.
    bool maintainAspectRatio() const { return m_keepAspect; }
    void setMaintainAspectRatio(bool keep) { m_keepAspect = keep; }

private:
    std::filesystem::path m_file;
    bool m_keepAspect = false;
};

} // namespace brevant::platform::carto
