#include "platform/automation/Variant.h"

#include "platform/automation/AutomationError.h"
#include "platform/automation/Collection.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/VariantArray.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace brevant::platform::automation {
namespace {

int32_t errorOf(const std::function<void()>& body)
{
    try {
        body();
    } catch (const AutomationError& e) {
        return e.number();
    }
    return 0;
}

TEST(VariantConversion, IntegersRoundHalfToEven)
{
    EXPECT_EQ(Variant(2.5).toInt16(), 2);
    EXPECT_EQ(Variant(3.5).toInt16(), 4);
    EXPECT_EQ(Variant(-2.5).toInt32(), -2);
    EXPECT_EQ(Variant(" 12 ").toInt16(), 12);
    EXPECT_EQ(Variant(true).toInt16(), -1);
    EXPECT_EQ(Variant().toInt32(), 0);
}

TEST(VariantConversion, NarrowingOutOfRangeIsOverflow)
{
    EXPECT_EQ(Variant(int32_t{32767}).toInt16(), 32767);
    EXPECT_EQ(errorOf([] { Variant(int32_t{32768}).toInt16(); }), ErrorNumber::Overflow);
    EXPECT_EQ(errorOf([] { Variant(int32_t{-32769}).toInt16(); }), ErrorNumber::Overflow);
    EXPECT_EQ(errorOf([] { Variant(3e9).toInt32(); }), ErrorNumber::Overflow);
}

TEST(VariantConversion, NonNumbersAreTypeMismatchAndNullIsInvalidUse)
{
    EXPECT_EQ(errorOf([] { Variant("abc").toDouble(); }), ErrorNumber::TypeMismatch);
    EXPECT_EQ(errorOf([] { Variant(Collection::of({})).toInt16(); }), ErrorNumber::TypeMismatch);
    EXPECT_EQ(errorOf([] { Variant::null().toString(); }), ErrorNumber::InvalidUseOfNull);
    EXPECT_EQ(errorOf([] { Variant(1.0).object(); }), ErrorNumber::TypeMismatch);
}

TEST(VariantConversion, TextForms)
{
    EXPECT_EQ(Variant(0.1).toString(), "0.1");
    EXPECT_EQ(Variant(1e20).toString(), "1E+20");
    EXPECT_EQ(Variant(-0.0).toString(), "0");
    EXPECT_EQ(Variant(true).toString(), "True");
    EXPECT_EQ(Variant(int16_t{-7}).toString(), "-7");
    EXPECT_TRUE(Variant("FALSE").toBool() == false);
    EXPECT_TRUE(Variant("0.5").toBool());
    EXPECT_EQ(Variant(Date::fromParts(2026, 11, 23, 8, 5, 0)).toString(), "2026-11-23 08:05:00");
    EXPECT_EQ(Date::parse("1899-12-31").serial, 1.0);
    EXPECT_EQ(errorOf([] { Date::parse("2026-02-30"); }), ErrorNumber::TypeMismatch);
}

TEST(VariantConversion, TypeNamesFollowTheHost)
{
    EXPECT_EQ(Variant().typeName(), "Empty");
    EXPECT_EQ(Variant::null().typeName(), "Null");
    EXPECT_EQ(Variant(int16_t{1}).typeName(), "Integer");
    EXPECT_EQ(Variant(int32_t{1}).typeName(), "Long");
    EXPECT_EQ(Variant(VariantArray(2)).typeName(), "Variant()");
}

TEST(VariantArrayTest, ArraysAreCopiedCollectionsAreShared)
{
    Variant a(VariantArray::of({1.0, 2.0}));
    Variant b = a;
    b.array().at(0) = Variant("changed");
    EXPECT_EQ(a.array().at(0), Variant(1.0));

    Variant c(Collection::of({"SOIL"}));
    Variant d = c;
    d.collection()->add("LIQF");
    EXPECT_EQ(c.collection()->count(), 2);
}

TEST(VariantArrayTest, TwoDimensionsWithLowerBounds)
{
    VariantArray grid({1, 2}, {0, 3});
    EXPECT_EQ(grid.dimensions(), 2);
    EXPECT_EQ(grid.upperBound(1), 2);
    EXPECT_EQ(grid.upperBound(2), 2);
    grid.at(2, 1) = Variant("x");
    EXPECT_EQ(grid.elements()[4], Variant("x"));
    EXPECT_EQ(errorOf([&] { grid.at(0, 0); }), ErrorNumber::SubscriptOutOfRange);
    EXPECT_EQ(errorOf([&] { grid.at(1); }), ErrorNumber::SubscriptOutOfRange);
    EXPECT_EQ(errorOf([&] { grid.lowerBound(3); }), ErrorNumber::SubscriptOutOfRange);
}

TEST(CollectionTest, OneBasedWithCaseInsensitiveKeys)
{
    Collection codes;
    codes.add("SOIL", "soil");
    codes.add("LIQF");
    EXPECT_EQ(codes.item(1), Variant("SOIL"));
    EXPECT_EQ(codes.item("SOIL"), Variant("SOIL"));
    EXPECT_EQ(errorOf([&] { codes.item(0); }), ErrorNumber::SubscriptOutOfRange);
    EXPECT_EQ(errorOf([&] { codes.item(3); }), ErrorNumber::SubscriptOutOfRange);
    EXPECT_EQ(errorOf([&] { codes.add("x", "Soil"); }), ErrorNumber::DuplicateKey);
    codes.remove(1);
    EXPECT_EQ(codes.item(1), Variant("LIQF"));
    EXPECT_EQ(codes.count(), 1);
}

TEST(ErrorConversion, StandardErrorsGetHostNumbers)
{
    auto convert = [](auto error) { return toAutomationError(std::make_exception_ptr(error)); };
    EXPECT_EQ(convert(std::bad_alloc()).number(), ErrorNumber::OutOfMemory);
    EXPECT_EQ(convert(std::out_of_range("x")).number(), ErrorNumber::SubscriptOutOfRange);
    EXPECT_EQ(convert(std::overflow_error("x")).number(), ErrorNumber::Overflow);
    const auto missing = convert(std::filesystem::filesystem_error(
        "cannot open", "/nowhere/a.mdb",
        std::make_error_code(std::errc::no_such_file_or_directory)));
    EXPECT_EQ(missing.number(), ErrorNumber::FileNotFound);
    EXPECT_NE(missing.description().find("/nowhere/a.mdb"), std::string::npos);
    const auto other = convert(std::runtime_error("disk on fire"));
    EXPECT_EQ(other.hex(), "0x80004005");
    EXPECT_EQ(other.description(), "disk on fire");
    EXPECT_EQ(other.source(), "Brevant");
}

} // namespace
} // namespace brevant::platform::automation
