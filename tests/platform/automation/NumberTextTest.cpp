#include "platform/automation/NumberText.h"

#include "platform/automation/AutomationError.h"
#include "platform/automation/ErrorNumbers.h"

#include <gtest/gtest.h>

namespace brevant::platform::automation {
namespace {

TEST(LeadingNumber, ReadsAsMuchOfTheTextAsFormsANumber)
{
    EXPECT_EQ(leadingNumber("  80", "t"), 80.0);
    EXPECT_EQ(leadingNumber("-12.5 percent", "t"), -12.5);
    EXPECT_EQ(leadingNumber("1.5D2", "t"), 150.0) << "D starts an exponent too";
    EXPECT_EQ(leadingNumber("2e", "t"), 2.0) << "an exponent without digits is not read";
    EXPECT_EQ(leadingNumber(".5", "t"), 0.5);
    EXPECT_EQ(leadingNumber("1 50", "t"), 1.0);
    for (const char* none : {"", "   ", "abc", "-", "."}) {
        EXPECT_EQ(leadingNumber(none, "t"), 0.0) << '"' << none << '"';
    }
}

TEST(LeadingNumber, ANumberBeyondADoubleOverflows)
{
    try {
        leadingNumber("1e999", "Brevant");
        FAIL() << "no overflow";
    } catch (const AutomationError& e) {
        EXPECT_EQ(e.number(), ErrorNumber::Overflow);
        EXPECT_EQ(e.source(), "Brevant");
    }
}

} // namespace
} // namespace brevant::platform::automation
