#include "BrevantClasses.h"

#include "exchange/EqOpenDocument.h"
#include "platform/automation/MemberTable.h"
#include "platform/carto/Map.h"
#include "support/HostFixture.h"

#include <gtest/gtest.h>

namespace brevant::exchange {
namespace {

using platform::automation::ArgList;
using platform::automation::Variant;
namespace automation = platform::automation;

class OpenDocument : public test::HostFixture {};

TEST_F(OpenDocument, AnswersTheCommandInterfaceByName)
{
    auto command = classes().create("Brevant.EqOpenDocument");
    const auto get = [&](const char* member) { return automation::getProperty(*command, member); };
    EXPECT_TRUE(get("Enabled").toBool());
    EXPECT_FALSE(get("Checked").toBool());
    EXPECT_EQ(get("Name").toString(), "Region &Wizard");
    EXPECT_EQ(get("Caption").toString(), get("Name").toString());
    for (const char* empty : {"Tooltip", "Message", "HelpFile"}) {
        EXPECT_EQ(get(empty).toString(), "") << empty;
    }
    EXPECT_EQ(get("HelpContextID").toInt32(), 0);
    EXPECT_EQ(get("Bitmap").toInt32(), 0);
    EXPECT_EQ(get("Category").toString(), "Test");
}

TEST_F(OpenDocument, AClickBeforeTheHookDoesNothingAndTheHookIsKept)
{
    auto object = classes().create("Brevant.EqOpenDocument");
    ArgList none;
    EXPECT_NO_THROW(automation::call(*object, "OnClick", none));
    auto& command = static_cast<EqOpenDocument&>(*object);
    EXPECT_TRUE(command.application().isEmpty());

    const auto application = std::make_shared<platform::carto::Map>();
    ArgList hook{Variant(application)};
    automation::call(*object, "OnCreate", hook);
    EXPECT_EQ(command.application().objectAs<platform::carto::Map>(), application);
    EXPECT_NO_THROW(automation::call(*object, "OnClick", none));
}

} // namespace
} // namespace brevant::exchange
