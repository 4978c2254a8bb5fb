#include "platform/carto/PictureElement.h"

#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"

namespace brevant::platform::carto {

void PictureElement::importPictureFromFile(const std::filesystem::path& file)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) {
        throw automation::PlatformError(automation::ErrorNumber::FileNotFound, "Carto",
                                        "cannot read the picture " + file.string() +
                                            ": the file does not exist");
    }
    m_file = file;
}

} // namespace brevant::platform::carto
