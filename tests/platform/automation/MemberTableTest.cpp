#include "platform/automation/MemberTable.h"

#include "platform/automation/AutomationError.h"
#include "platform/automation/ClassRegistry.h"
#include "platform/automation/ErrorNumbers.h"

#include <gtest/gtest.h>

namespace brevant::platform::automation {
namespace {

class Gauge : public AutomationObject {
public:
    std::string_view className() const override { return "Gauge"; }
    const MemberTable* members() const override
    {
        static const MemberTable table = [] {
            MemberTable t("Gauge");
            t.method("Scale", &Gauge::Scale)
                .method("Describe", &Gauge::Describe)
                .method("Count", &Gauge::Count)
                .property("Level", &Gauge::level, &Gauge::setLevel)
                .property("Name", &Gauge::name);
            return t;
        }();
        return &table;
    }

    // factor by value, total and label by reference, offset optional.
    double Scale(int16_t factor, double& total, std::string& label, std::optional<double> offset)
    {
        total = total * factor + offset.value_or(0.0);
        label = "scaled by " + std::to_string(factor);
        return total;
    }
    std::string Describe(const Variant& value) { return value.typeName(); }
    int32_t Count(std::shared_ptr<Collection> items) { return items->count(); }

    int16_t level() const { return m_level; }
    void setLevel(int16_t level) { m_level = level; }
    std::string name() const { return "north"; }

private:
    int16_t m_level = 0;
};

AutomationError errorOf(const std::function<void()>& body)
{
    try {
        body();
    } catch (const AutomationError& e) {
        return e;
    }
    return AutomationError(0, "", "");
}

TEST(Dispatch, ByReferenceArgumentsAreWrittenBack)
{
    Gauge gauge;
    ArgList args{Variant("3"), Variant(int32_t{2}), Variant()};
    const Variant result = call(gauge, "scale", args);
    EXPECT_EQ(result, Variant(6.0));
    EXPECT_EQ(args[0], Variant("3")) << "by-value arguments stay as given";
    EXPECT_EQ(args[1], Variant(6.0));
    EXPECT_EQ(args[2], Variant("scaled by 3"));

    ArgList withOffset{Variant(int16_t{1}), Variant(1.0), Variant(), Variant(0.5)};
    EXPECT_EQ(call(gauge, "Scale", withOffset), Variant(1.5));
}

TEST(Dispatch, MissingMemberNamesClassAndMember)
{
    Gauge gauge;
    ArgList none;
    const auto error = errorOf([&] { call(gauge, "ClipHazardDataMaps", none); });
    EXPECT_EQ(error.number(), ErrorNumber::MemberNotFound);
    EXPECT_NE(error.description().find("Gauge.ClipHazardDataMaps"), std::string::npos);
}

TEST(Dispatch, ArgumentCountAndTypesAreChecked)
{
    Gauge gauge;
    ArgList tooFew{Variant(int16_t{1})};
    EXPECT_EQ(errorOf([&] { call(gauge, "Scale", tooFew); }).number(),
              ErrorNumber::WrongArgumentCount);
    ArgList tooMany{Variant(1.0), Variant(1.0), Variant(), Variant(1.0), Variant(1.0)};
    EXPECT_EQ(errorOf([&] { call(gauge, "Scale", tooMany); }).number(),
              ErrorNumber::WrongArgumentCount);
    ArgList wrongType{Variant("three"), Variant(1.0), Variant()};
    const auto mismatch = errorOf([&] { call(gauge, "Scale", wrongType); });
    EXPECT_EQ(mismatch.number(), ErrorNumber::TypeMismatch);
    EXPECT_NE(mismatch.description().find("argument 1 of Gauge.Scale"), std::string::npos);
    ArgList overflow{Variant(70000.0), Variant(1.0), Variant()};
    EXPECT_EQ(errorOf([&] { call(gauge, "Scale", overflow); }).number(), ErrorNumber::Overflow);
    ArgList notCollection{Variant("SOIL")};
    EXPECT_EQ(errorOf([&] { call(gauge, "Count", notCollection); }).number(),
              ErrorNumber::TypeMismatch);
}

TEST(Dispatch, VariantParametersTakeAnything)
{
    Gauge gauge;
    ArgList args{Variant::null()};
    EXPECT_EQ(call(gauge, "Describe", args), Variant("Null"));
}

TEST(Dispatch, PropertiesGetAndPut)
{
    Gauge gauge;
    setProperty(gauge, "level", Variant("12"));
    EXPECT_EQ(getProperty(gauge, "LEVEL"), Variant(int16_t{12}));
    ArgList none;
    EXPECT_EQ(call(gauge, "Level", none), Variant(int16_t{12})) << "a call may read a property";
    EXPECT_EQ(errorOf([&] { setProperty(gauge, "Name", Variant("south")); }).number(),
              ErrorNumber::WrongArgumentCount);
    EXPECT_EQ(errorOf([&] { getProperty(gauge, "Scale"); }).number(),
              ErrorNumber::WrongArgumentCount);
}

TEST(Registry, CreatesByProgIdWithoutRegardToCase)
{
    ClassRegistry registry;
    registry.add("Test.Gauge", [] { return std::make_shared<Gauge>(); });
    EXPECT_EQ(registry.create("test.gauge")->className(), "Gauge");
    const auto error = errorOf([&] { registry.create("Test.Missing"); });
    EXPECT_EQ(error.number(), ErrorNumber::CannotCreateObject);
    EXPECT_NE(error.description().find("Test.Missing"), std::string::npos);
}

} // namespace
} // namespace brevant::platform::automation
