#pragma once

#include "platform/automation/AutomationObject.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace brevant::platform::automation {

/// Maps ProgIDs ("Brevant.EqPoint") to factories, as the host creates classes by name.
/// ProgIDs are matched without regard to case.
class ClassRegistry {
public:
    using Factory = std::function<std::shared_ptr<AutomationObject>()>;

    /// Adds a class; a later registration of the same ProgID replaces the earlier one.
    void add(std::string progId, Factory factory);
    /// Creates an object. Throws error 429 naming the ProgID when it is unknown; whatever the
    /// class initialiser raises passes through, so a failing initialiser fails the creation.
    std::shared_ptr<AutomationObject> create(std::string_view progId) const;
    bool contains(std::string_view progId) const;
    /// The registered ProgIDs, in registration order.
    std::vector<std::string> progIds() const;

private:
    struct Entry {
        std::string progId;
        Factory factory;
    };
    const Entry* find(std::string_view progId) const;

    std::vector<Entry> m_entries;
};

} // namespace brevant::platform::automation
