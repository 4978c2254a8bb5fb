#include "platform/geodatabase/Fields.h"

#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"

namespace brevant::platform::geodatabase {

const Field& Fields::field(int index) const
{
    if (index < 0 || index >= count()) {
        throw automation::PlatformError(automation::ErrorNumber::SubscriptOutOfRange, "Fields",
                                        "field index " + std::to_string(index) +
                                            " is outside 0.." + std::to_string(count() - 1));
    }
    return m_fields[static_cast<std::size_t>(index)];
}

int Fields::findField(std::string_view name) const
{
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        if (automation::equalsIgnoreCase(m_fields[i].name, name)) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

} // namespace brevant::platform::geodatabase
