#pragma once

#include <memory>
#include <string_view>

namespace brevant::platform::automation {

class MemberTable;

/// Base of every object that travels in a Variant: the public classes, and the platform's
/// feature classes, tables, maps and layers that the host and the library hand each other.
class AutomationObject : public std::enable_shared_from_this<AutomationObject> {
public:
    virtual ~AutomationObject() = default;

    /// The class name the host sees (TypeName).
    virtual std::string_view className() const = 0;
    /// The members callable by name; null for objects that are only handed around.
    virtual const MemberTable* members() const { return nullptr; }
};

} // namespace brevant::platform::automation
