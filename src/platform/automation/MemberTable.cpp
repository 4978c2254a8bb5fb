#include "platform/automation/MemberTable.h"

#include "platform/automation/CaseInsensitive.h"

namespace brevant::platform::automation {

namespace {
[[noreturn]] void noMember(const AutomationObject& object, std::string_view member)
{
    const std::string cls(object.className());
    throw AutomationError(ErrorNumber::MemberNotFound, cls,
                          "Object doesn't support this property or method: " + cls + "." +
                              std::string(member));
}

[[noreturn]] void wrongUse(const std::string& cls, const std::string& member,
                           const std::string& why)
{
    throw AutomationError(ErrorNumber::WrongArgumentCount, cls,
                          "Wrong number of arguments or invalid property assignment: " + cls + "." +
                              member + " " + why);
}
} // namespace

const Member* MemberTable::find(std::string_view name) const
{
    for (const auto& member : m_members) {
        if (equalsIgnoreCase(member.name, name)) {
            return &member;
        }
    }
    return nullptr;
}

Variant invoke(AutomationObject& object, std::string_view memberName, InvokeKind kind,
               ArgList& args)
{
    const MemberTable* table = object.members();
    const Member* member = table ? table->find(memberName) : nullptr;
    if (!member) {
        noMember(object, memberName);
    }
    const std::string cls(object.className());
    switch (kind) {
    case InvokeKind::Method:
        if (!member->method) {
            // A property read through a call with no arguments is what late binding allows.
            if (member->getter && args.empty()) {
                return member->getter(object);
            }
            wrongUse(cls, member->name, "is a property, not a method");
        }
        if (args.size() < member->requiredArgs || args.size() > member->byRef.size()) {
            wrongUse(cls, member->name,
                     "takes " +
                         (member->requiredArgs == member->byRef.size()
                              ? std::to_string(member->requiredArgs)
                              : std::to_string(member->requiredArgs) + " to " +
                                    std::to_string(member->byRef.size())) +
                         " arguments, " + std::to_string(args.size()) + " given");
        }
        return member->method(object, args);
    case InvokeKind::PropertyGet:
        if (!member->getter) {
            wrongUse(cls, member->name, "is a method, not a property");
        }
        return member->getter(object);
    case InvokeKind::PropertyPut:
        if (!member->setter) {
            wrongUse(cls, member->name, "cannot be assigned");
        }
        if (args.size() != 1) {
            wrongUse(cls, member->name, "takes one value");
        }
        member->setter(object, args.front());
        return {};
    }
    return {};
}

Variant call(AutomationObject& object, std::string_view member, ArgList& args)
{
    return invoke(object, member, InvokeKind::Method, args);
}

Variant getProperty(AutomationObject& object, std::string_view member)
{
    ArgList none;
    return invoke(object, member, InvokeKind::PropertyGet, none);
}

void setProperty(AutomationObject& object, std::string_view member, const Variant& value)
{
    ArgList args{value};
    invoke(object, member, InvokeKind::PropertyPut, args);
}

} // namespace brevant::platform::automation
