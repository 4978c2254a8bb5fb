#include "app/DialogActions.h"

#include "platform/automation/AutomationError.h"

#include <gtest/gtest.h>

namespace brevant::app {
namespace {

using json = nlohmann::ordered_json;
using platform::ui::DialogAction;

std::string refusal(const std::string& actions)
{
    try {
        dialogActionsFromJson(json::parse(actions));
    } catch (const platform::automation::AutomationError& e) {
        return e.description();
    }
    return "accepted";
}

TEST(DialogActions, ReadsEveryKindWithItsArguments)
{
    const auto actions = dialogActionsFromJson(json::parse(
        R"([{"click": [-120.5, 37], "shift": true}, {"drag": [1, 2, 3, 4]}, {"select": ["lstLayers", 2]},
            {"choose": ["cboPtStyle", "Diamond"]}, {"colour": [0, 0, 255]}, {"colour": null}, {"close": true}])"));
    ASSERT_EQ(actions.size(), 7u);
    EXPECT_EQ(actions[0].kind, DialogAction::Kind::Click);
    EXPECT_EQ(actions[0].coordinates, (std::vector<double>{-120.5, 37}));
    EXPECT_TRUE(actions[0].flag);
    EXPECT_EQ(actions[1].coordinates.size(), 4u);
    EXPECT_EQ(actions[2].name, "lstLayers");
    EXPECT_EQ(actions[2].index, 2);
    EXPECT_EQ(actions[3].text, "Diamond");
    EXPECT_FALSE(actions[3].index);
    EXPECT_EQ(actions[4].colour, 0xFF0000) << "blue sits in the high byte";
    EXPECT_FALSE(actions[5].colour) << "null cancels the colour dialog";
    EXPECT_EQ(actions[6].kind, DialogAction::Kind::Close);
    EXPECT_EQ(json::parse(actions[2].source), json::parse(R"({"select": ["lstLayers", 2]})"));
}

TEST(DialogActions, MalformedActionsAreRefusedWithTheirReason)
{
    EXPECT_NE(refusal(R"({"press": "cmdUp"})").find("needs an array"), std::string::npos);
    EXPECT_NE(refusal(R"([{"click": [1]}])").find("needs 2 map coordinates"), std::string::npos);
    EXPECT_NE(refusal(R"([{"check": ["chkVisible", "yes"]}])").find("true or false"),
              std::string::npos);
    EXPECT_NE(refusal(R"([{"colour": [0, 300, 0]}])").find("0 to 255"), std::string::npos);
    EXPECT_NE(refusal(R"([{"close": false}])").find("needs true"), std::string::npos);
    EXPECT_NE(refusal(R"([{"press": "cmdUp"}, {"poke": 1}])").find("unknown action \"poke\""),
              std::string::npos);
}

} // namespace
} // namespace brevant::app
