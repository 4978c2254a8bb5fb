#include "platform/automation/Variant.h"

#include "platform/automation/AutomationError.h"
#include "platform/automation/AutomationObject.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/Collection.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/VariantArray.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <utility>

namespace brevant::platform::automation {

namespace {
constexpr const char* kSource = "Brevant";

[[noreturn]] void throwOverflow()
{
    throw AutomationError(ErrorNumber::Overflow, kSource, "Overflow");
}

[[noreturn]] void throwNull()
{
    throw AutomationError(ErrorNumber::InvalidUseOfNull, kSource, "Invalid use of Null");
}

bool parseNumber(const std::string& text, double& out)
{
    std::size_t begin = text.find_first_not_of(" \t");
    std::size_t end = text.find_last_not_of(" \t");
    if (begin == std::string::npos) {
        return false;
    }
    const std::string trimmed = text.substr(begin, end - begin + 1);
    char* stop = nullptr;
    errno = 0;
    const double value = std::strtod(trimmed.c_str(), &stop);
    if (stop != trimmed.c_str() + trimmed.size() || errno == ERANGE || std::isnan(value) ||
        std::isinf(value)) {
        return false;
    }
    out = value;
    return true;
}

template <class Int> Int narrow(double value)
{
    // Integer conversion rounds half to even; the default rounding mode does exactly that.
    const double rounded = std::nearbyint(value);
    if (!(rounded >= static_cast<double>(std::numeric_limits<Int>::min()) &&
          rounded <= static_cast<double>(std::numeric_limits<Int>::max()))) {
        throwOverflow();
    }
    return static_cast<Int>(rounded);
}

std::string formatDouble(double value)
{
    if (value == 0.0) {
        return "0";
    }
    char text[40];
    std::snprintf(text, sizeof text, "%.15G", value);
    return text;
}
} // namespace

Variant::Variant(VariantArray value)
    : m_value(ArrayBox{std::make_shared<VariantArray>(std::move(value))})
{
}

Variant::Variant(std::shared_ptr<Collection> value) : m_value(std::move(value))
{
}

Variant::Variant(std::shared_ptr<AutomationObject> value) : m_value(std::move(value))
{
}

Variant::Variant(const Variant& other)
{
    *this = other;
}

Variant& Variant::operator=(const Variant& other)
{
    if (this == &other) {
        return *this;
    }
    if (const auto* box = std::get_if<ArrayBox>(&other.m_value)) {
        m_value = ArrayBox{std::make_shared<VariantArray>(*box->value)};
    } else {
        std::visit(
            [this](const auto& value) {
                using T = std::decay_t<decltype(value)>;
                if constexpr (!std::is_same_v<T, ArrayBox>) {
                    m_value = value;
                }
            },
            other.m_value);
    }
    return *this;
}

Variant::Variant(Variant&&) noexcept = default;
Variant& Variant::operator=(Variant&&) noexcept = default;
Variant::~Variant() = default;

Variant Variant::null()
{
    Variant v;
    v.m_value = NullValue{};
    return v;
}

VariantType Variant::type() const
{
    return static_cast<VariantType>(m_value.index());
}

bool Variant::isNumeric() const
{
    switch (type()) {
    case VariantType::Boolean:
    case VariantType::Int16:
    case VariantType::Int32:
    case VariantType::Double:
        return true;
    case VariantType::String: {
        double ignored = 0;
        return parseNumber(std::get<std::string>(m_value), ignored);
    }
    default:
        return false;
    }
}

void Variant::throwTypeMismatch(const char* wanted) const
{
    throw AutomationError(ErrorNumber::TypeMismatch, kSource,
                          std::string("Type mismatch: ") + typeName() + " where " + wanted +
                              " was expected");
}

double Variant::numericValue(const char* wanted) const
{
    switch (type()) {
    case VariantType::Empty:
        return 0.0;
    case VariantType::Null:
        throwNull();
    case VariantType::Boolean:
        return std::get<bool>(m_value) ? -1.0 : 0.0;
    case VariantType::Int16:
        return std::get<int16_t>(m_value);
    case VariantType::Int32:
        return std::get<int32_t>(m_value);
    case VariantType::Double:
        return std::get<double>(m_value);
    case VariantType::Date:
        return std::get<Date>(m_value).serial;
    case VariantType::String: {
        double value = 0;
        if (parseNumber(std::get<std::string>(m_value), value)) {
            return value;
        }
        throw AutomationError(ErrorNumber::TypeMismatch, kSource,
                              "Type mismatch: \"" + std::get<std::string>(m_value) + "\" where " +
                                  wanted + " was expected");
    }
    default:
        throwTypeMismatch(wanted);
    }
}

bool Variant::toBool() const
{
    if (const auto* b = std::get_if<bool>(&m_value)) {
        return *b;
    }
    if (const auto* s = std::get_if<std::string>(&m_value)) {
        if (equalsIgnoreCase(*s, "True")) {
            return true;
        }
        if (equalsIgnoreCase(*s, "False")) {
            return false;
        }
    }
    return numericValue("a Boolean") != 0.0;
}

int16_t Variant::toInt16() const
{
    if (const auto* i = std::get_if<int16_t>(&m_value)) {
        return *i;
    }
    return narrow<int16_t>(numericValue("an Integer"));
}

int32_t Variant::toInt32() const
{
    if (const auto* i = std::get_if<int32_t>(&m_value)) {
        return *i;
    }
    return narrow<int32_t>(numericValue("a Long"));
}

double Variant::toDouble() const
{
    return numericValue("a Double");
}

std::string Variant::toString() const
{
    switch (type()) {
    case VariantType::Empty:
        return {};
    case VariantType::Null:
        throwNull();
    case VariantType::Boolean:
        return std::get<bool>(m_value) ? "True" : "False";
    case VariantType::Int16:
        return std::to_string(std::get<int16_t>(m_value));
    case VariantType::Int32:
        return std::to_string(std::get<int32_t>(m_value));
    case VariantType::Double:
        return formatDouble(std::get<double>(m_value));
    case VariantType::String:
        return std::get<std::string>(m_value);
    case VariantType::Date:
        return std::get<Date>(m_value).toString();
    default:
        throwTypeMismatch("a String");
    }
}

Date Variant::toDate() const
{
    if (const auto* d = std::get_if<Date>(&m_value)) {
        return *d;
    }
    if (const auto* s = std::get_if<std::string>(&m_value)) {
        return Date::parse(*s);
    }
    return Date{numericValue("a Date")};
}

const VariantArray& Variant::array() const
{
    if (const auto* box = std::get_if<ArrayBox>(&m_value)) {
        return *box->value;
    }
    throwTypeMismatch("an array");
}

VariantArray& Variant::array()
{
    return const_cast<VariantArray&>(std::as_const(*this).array());
}

std::shared_ptr<Collection> Variant::collection() const
{
    if (const auto* c = std::get_if<std::shared_ptr<Collection>>(&m_value)) {
        return *c;
    }
    throwTypeMismatch("a Collection");
}

std::shared_ptr<AutomationObject> Variant::object() const
{
    switch (type()) {
    case VariantType::Empty:
    case VariantType::Null:
        return nullptr;
    case VariantType::Object:
        return std::get<std::shared_ptr<AutomationObject>>(m_value);
    default:
        throwTypeMismatch("an object");
    }
}

std::string Variant::typeName() const
{
    switch (type()) {
    case VariantType::Empty:
        return "Empty";
    case VariantType::Null:
        return "Null";
    case VariantType::Boolean:
        return "Boolean";
    case VariantType::Int16:
        return "Integer";
    case VariantType::Int32:
        return "Long";
    case VariantType::Double:
        return "Double";
    case VariantType::String:
        return "String";
    case VariantType::Date:
        return "Date";
    case VariantType::Array:
        return "Variant()";
    case VariantType::Collection:
        return "Collection";
    case VariantType::Object: {
        const auto& object = std::get<std::shared_ptr<AutomationObject>>(m_value);
        return object ? std::string(object->className()) : "Nothing";
    }
    }
    return "Empty";
}

bool Variant::operator==(const Variant& other) const
{
    if (type() != other.type()) {
        return false;
    }
    if (const auto* box = std::get_if<ArrayBox>(&m_value)) {
        return *box->value == *std::get<ArrayBox>(other.m_value).value;
    }
    return std::visit(
        [&other](const auto& value) {
            using T = std::decay_t<decltype(value)>;
            if constexpr (std::is_same_v<T, ArrayBox>) {
                return false;
            } else {
                return value == std::get<T>(other.m_value);
            }
        },
        m_value);
}

} // namespace brevant::platform::automation
