#include "platform/automation/ClassRegistry.h"

#include "platform/automation/AutomationError.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/ErrorNumbers.h"

namespace brevant::platform::automation {

void ClassRegistry::add(std::string progId, Factory factory)
{
    for (auto& entry : m_entries) {
        if (equalsIgnoreCase(entry.progId, progId)) {
            entry.factory = std::move(factory);
            return;
        }
    }
    m_entries.push_back(Entry{std::move(progId), std::move(factory)});
}

std::shared_ptr<AutomationObject> ClassRegistry::create(std::string_view progId) const
{
    const Entry* entry = find(progId);
    if (!entry) {
        throw AutomationError(ErrorNumber::CannotCreateObject, "Brevant",
                              "ActiveX component can't create object: no class is registered "
                              "as " +
                                  std::string(progId));
    }
    return entry->factory();
}

bool ClassRegistry::contains(std::string_view progId) const
{
    return find(progId) != nullptr;
}

std::vector<std::string> ClassRegistry::progIds() const
{
    std::vector<std::string> ids;
    for (const auto& entry : m_entries) {
        ids.push_back(entry.progId);
    }
    return ids;
}

const ClassRegistry::Entry* ClassRegistry::find(std::string_view progId) const
{
    for (const auto& entry : m_entries) {
        if (equalsIgnoreCase(entry.progId, progId)) {
            return &entry;
        }
    }
    return nullptr;
}

} // namespace brevant::platform::automation
