#pragma once

#include "platform/automation/AutomationError.h"
#include "platform/automation/AutomationObject.h"
#include "platform/automation/Collection.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/Variant.h"
#include "platform/automation/VariantArray.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace brevant::platform::automation {

using ArgList = std::vector<Variant>;

enum class InvokeKind { Method, PropertyGet, PropertyPut };

/// How a parameter type crosses the boundary: loaded from a variant, and (for by-reference
/// parameters) stored back into it after the call.
template <class T> struct ArgTraits;

template <> struct ArgTraits<Variant> {
    static Variant load(const Variant& v) { return v; }
    static Variant store(const Variant& v) { return v; }
};
template <> struct ArgTraits<bool> {
    static bool load(const Variant& v) { return v.toBool(); }
    static Variant store(bool v) { return v; }
};
template <> struct ArgTraits<int16_t> {
    static int16_t load(const Variant& v) { return v.toInt16(); }
    static Variant store(int16_t v) { return v; }
};
template <> struct ArgTraits<int32_t> {
    static int32_t load(const Variant& v) { return v.toInt32(); }
    static Variant store(int32_t v) { return v; }
};
template <> struct ArgTraits<double> {
    static double load(const Variant& v) { return v.toDouble(); }
    static Variant store(double v) { return v; }
};
template <> struct ArgTraits<std::string> {
    static std::string load(const Variant& v) { return v.toString(); }
    static Variant store(std::string v) { return v; }
};
template <> struct ArgTraits<Date> {
    static Date load(const Variant& v) { return v.toDate(); }
    static Variant store(Date v) { return v; }
};
template <> struct ArgTraits<std::shared_ptr<Collection>> {
    static std::shared_ptr<Collection> load(const Variant& v) { return v.collection(); }
    static Variant store(std::shared_ptr<Collection> v) { return v; }
};
template <class T>
requires std::is_base_of_v<AutomationObject, T>
struct ArgTraits<std::shared_ptr<T>> {
    static std::shared_ptr<T> load(const Variant& v) { return v.objectAs<T>(); }
    static Variant store(std::shared_ptr<T> v) { return Variant(std::move(v)); }
};

/// An optional by-reference parameter goes back as Empty when it holds nothing.
template <class T> struct ArgTraits<std::optional<T>> {
    static Variant store(const std::optional<T>& v) { return v ? ArgTraits<T>::store(*v) : Variant(); }
};

/// A parameter declared `T&` (not const) is by reference: its value is written back.
template <class P>
inline constexpr bool isByRef =
    std::is_lvalue_reference_v<P> && !std::is_const_v<std::remove_reference_t<P>>;

template <class T> struct IsOptional : std::false_type {
};
template <class T> struct IsOptional<std::optional<T>> : std::true_type {
};

/// One member callable by name.
struct Member {
    std::string name;
    std::function<Variant(AutomationObject&, ArgList&)> method;
    std::function<Variant(AutomationObject&)> getter;
    std::function<void(AutomationObject&, const Variant&)> setter;
    /// Per parameter: written back after the call.
    std::vector<bool> byRef;
    std::size_t requiredArgs = 0;
};

/// The members of one automation class, found by name without regard to case as late binding
/// does. Methods are bound from member functions; argument conversion, argument-count checks
/// and the write-back of by-reference parameters are done here once for every class.
class MemberTable {
public:
    explicit MemberTable(std::string className) : m_className(std::move(className)) {}

    const std::string& className() const { return m_className; }

    /// Binds a member function as a method. Parameters may be values, const references,
    /// non-const references (by reference) or std::optional<T> (optional, trailing).
    template <class C, class R, class... A> MemberTable& method(std::string name, R (C::*fn)(A...))
    {
        Member m;
        m.name = std::move(name);
        m.byRef = {isByRef<A>...};
        m.requiredArgs = requiredCount<A...>();
        m.method = [fn, memberName = m.name, cls = m_className](AutomationObject& self,
                                                                ArgList& args) -> Variant {
            auto& obj = static_cast<C&>(self);
            return invokeBound<C, R, A...>(obj, fn, args, cls, memberName,
                                           std::index_sequence_for<A...>{});
        };
        m_members.push_back(std::move(m));
        return *this;
    }

    /// Binds a read-write property from a getter and a setter.
    template <class C, class T, class S>
    MemberTable& property(std::string name, T (C::*get)() const, void (C::*set)(S))
    {
        Member m;
        m.name = std::move(name);
        m.getter = [get](AutomationObject& self) -> Variant {
            return ArgTraits<std::decay_t<T>>::store((static_cast<C&>(self).*get)());
        };
        m.setter = [set](AutomationObject& self, const Variant& value) {
            (static_cast<C&>(self).*set)(ArgTraits<std::decay_t<S>>::load(value));
        };
        m_members.push_back(std::move(m));
        return *this;
    }

    /// A read-only property.
    template <class C, class T> MemberTable& property(std::string name, T (C::*get)() const)
    {
        Member m;
        m.name = std::move(name);
        m.getter = [get](AutomationObject& self) -> Variant {
            return ArgTraits<std::decay_t<T>>::store((static_cast<C&>(self).*get)());
        };
        m_members.push_back(std::move(m));
        return *this;
    }

    /// The member of that name, or null.
    const Member* find(std::string_view name) const;

private:
    template <class... A> static constexpr std::size_t requiredCount()
    {
        std::size_t count = 0;
        std::size_t index = 0;
        ((++index, count = IsOptional<std::decay_t<A>>::value ? count : index), ...);
        return count;
    }

    template <class P>
    static auto loadArg(const ArgList& args, std::size_t i, const std::string& cls,
                        const std::string& member)
    {
        using T = std::decay_t<P>;
        try {
            if constexpr (IsOptional<T>::value) {
                if (i >= args.size() || args[i].isEmpty()) {
                    return T{};
                }
                return T{ArgTraits<typename T::value_type>::load(args[i])};
            } else {
                return ArgTraits<T>::load(args[i]);
            }
        } catch (const AutomationError& e) {
            throw AutomationError(e.number(), cls,
                                  e.description() + " (argument " + std::to_string(i + 1) + " of " +
                                      cls + "." + member + ")");
        }
    }

    template <class C, class R, class... A, std::size_t... I>
    static Variant invokeBound(C& obj, R (C::*fn)(A...), ArgList& args, const std::string& cls,
                               const std::string& member, std::index_sequence<I...>)
    {
        std::tuple<std::decay_t<A>...> values{loadArg<A>(args, I, cls, member)...};
        Variant result;
        if constexpr (std::is_void_v<R>) {
            (obj.*fn)(std::get<I>(values)...);
        } else {
            result = ArgTraits<std::decay_t<R>>::store((obj.*fn)(std::get<I>(values)...));
        }
        (storeBack<A>(args, I, std::get<I>(values)), ...);
        return result;
    }

    template <class P, class V> static void storeBack(ArgList& args, std::size_t i, V& value)
    {
        if constexpr (isByRef<P>) {
            if (i < args.size()) {
                args[i] = ArgTraits<std::decay_t<P>>::store(value);
            }
        }
    }

    std::string m_className;
    std::vector<Member> m_members;
};

/// Calls a member of an object by name. Method arguments are converted to the parameter types;
/// by-reference parameters are written back into `args`. Errors: 438 when the class has no
/// such member (the description names class and member), 450 for a wrong argument count or a
/// property used as a method, 13 for an argument of the wrong type; whatever the member raises
/// passes through.
Variant invoke(AutomationObject& object, std::string_view member, InvokeKind kind, ArgList& args);

/// Convenience forms of invoke.
Variant call(AutomationObject& object, std::string_view member, ArgList& args);
Variant getProperty(AutomationObject& object, std::string_view member);
void setProperty(AutomationObject& object, std::string_view member, const Variant& value);

} // namespace brevant::platform::automation
