#pragma once

#include "platform/automation/Date.h"

#include <cstdint>
#include <memory>
#include <string>
#include <variant>

namespace brevant::platform::automation {

class AutomationObject;
class Collection;
class VariantArray;

enum class VariantType {
    Empty,
    Null,
    Boolean,
    Int16,
    Int32,
    Double,
    String,
    Date,
    Array,
    Collection,
    Object,
};

/// The value that crosses the automation boundary: empty, null, boolean, 16- and 32-bit
/// integers, double, string, date, a one- or two-dimensional array, a collection or an object
/// reference. Arrays are values (copied with the variant); collections and objects are
/// references (copies share them).
///
/// Conversions follow the host's late-binding rules: numbers and numeric strings convert into
/// each other, integers round half to even, a value outside the target's range is error 6
/// (overflow), Null is error 94 and anything else that does not fit is error 13 (type mismatch).
class Variant {
public:
    struct NullValue {
        bool operator==(const NullValue&) const = default;
    };

    Variant() = default;
    Variant(bool value) : m_value(value) {}
    Variant(int16_t value) : m_value(value) {}
    Variant(int32_t value) : m_value(value) {}
    Variant(double value) : m_value(value) {}
    Variant(std::string value) : m_value(std::move(value)) {}
    Variant(const char* value) : m_value(std::string(value)) {}
    Variant(Date value) : m_value(value) {}
    Variant(VariantArray value);
    Variant(std::shared_ptr<Collection> value);
    Variant(std::shared_ptr<AutomationObject> value);
    template <class T>
    requires std::is_base_of_v<AutomationObject, T> Variant(std::shared_ptr<T> value)
        : Variant(std::shared_ptr<AutomationObject>(std::move(value)))
    {
    }

    Variant(const Variant& other);
    Variant(Variant&&) noexcept;
    Variant& operator=(const Variant& other);
    Variant& operator=(Variant&&) noexcept;
    ~Variant();

    static Variant null();

    VariantType type() const;
    bool isEmpty() const { return type() == VariantType::Empty; }
    bool isNull() const { return type() == VariantType::Null; }
    bool isNumeric() const;
    bool isObject() const { return type() == VariantType::Object; }

    bool toBool() const;
    int16_t toInt16() const;
    int32_t toInt32() const;
    double toDouble() const;
    /// Text form: "True"/"False", numbers in general form (up to 15 significant digits), dates
    /// as Date::toString; empty is "". Throws 94 for Null, 13 for arrays and references.
    std::string toString() const;
    Date toDate() const;

    /// The array held; throws error 13 when the variant holds none.
    const VariantArray& array() const;
    VariantArray& array();
    /// The collection held; throws error 13 when the variant holds none.
    std::shared_ptr<Collection> collection() const;
    /// The object held (null for an empty or Null variant); throws error 13 for other values.
    std::shared_ptr<AutomationObject> object() const;
    /// The object held as T; throws error 13 when it is another kind of object.
    template <class T> std::shared_ptr<T> objectAs() const
    {
        auto any = object();
        if (!any) {
            return nullptr;
        }
        auto typed = std::dynamic_pointer_cast<T>(any);
        if (!typed) {
            throwTypeMismatch("object of another class");
        }
        return typed;
    }

    /// The host's name of the value's type: "Empty", "Null", "Boolean", "Integer", "Long",
    /// "Double", "String", "Date", "Variant()", "Collection" or the object's class name.
    std::string typeName() const;

    /// Same type and equal value; objects and collections compare by identity.
    bool operator==(const Variant& other) const;

private:
    struct ArrayBox {
        // Owned alone: copies of the variant copy the array (see the copy operations).
        std::shared_ptr<VariantArray> value;
    };
    [[noreturn]] void throwTypeMismatch(const char* wanted) const;
    double numericValue(const char* wanted) const;

    std::variant<std::monostate, NullValue, bool, int16_t, int32_t, double, std::string, Date,
                 ArrayBox, std::shared_ptr<Collection>, std::shared_ptr<AutomationObject>>
        m_value;
};

} // namespace brevant::platform::automation
