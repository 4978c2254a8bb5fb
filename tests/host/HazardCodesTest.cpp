#include "host/HazardCodes.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <string>

namespace brevant::host {
namespace {

// The analyses and the reference host's analysis table both read the result-field table; a
// ground-motion code added to the registry alone would be registered but never analysed.
TEST(HazardResultFields, CoverExactlyTheGroundMotionCodes)
{
    std::set<std::string> groundMotion;
    for (const auto& code : hazardCodes()) {
        if (code.group == HazardCode::Group::GroundMotion) {
            groundMotion.insert(code.code);
        }
    }
    std::set<std::string> withField;
    for (const auto& [code, field] : hazardResultFields()) {
        withField.emplace(code);
    }
    EXPECT_EQ(withField, groundMotion);
}

TEST(HazardResultFields, EachCodeHasAFieldOfItsOwn)
{
    std::set<std::string> fields;
    for (const auto& [code, field] : hazardResultFields()) {
        EXPECT_TRUE(fields.emplace(field).second) << field << " twice";
    }
    EXPECT_EQ(hazardResultFields().front().code, "PGAM");
    EXPECT_EQ(hazardResultFields().front().resultField, "pga");
    EXPECT_EQ(hazardResultFields().back().code, "SRPR");
    EXPECT_EQ(hazardResultFields().back().resultField, "SurfFltRuptProb");
}

} // namespace
} // namespace brevant::host
