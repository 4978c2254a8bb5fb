#include "app/ScriptRunner.h"

#include "BrevantClasses.h"
#include "platform/automation/MemberTable.h"
#include "support/HostFixture.h"

#include <gtest/gtest.h>
#include <sstream>

namespace brevant::app {
namespace {

using json = nlohmann::ordered_json;
using platform::automation::Variant;

/// A class with the argument kinds the host's classes use, to check the script contract.
class Probe : public platform::automation::AutomationObject {
public:
    std::string_view className() const override { return "Probe"; }
    const platform::automation::MemberTable* members() const override
    {
        static const platform::automation::MemberTable table = [] {
            platform::automation::MemberTable t("Probe");
            t.method("Fill", &Probe::Fill)
                .method("Kind", &Probe::Kind)
                .method("Warn", &Probe::Warn);
            return t;
        }();
        return &table;
    }
    bool Fill(const std::string& table, int16_t& count, std::string& status)
    {
        count = static_cast<int16_t>(table.size());
        status = "filled " + table;
        return true;
    }
    std::string Kind(const Variant& value) { return value.typeName(); }
    std::string Warn(const std::string& text)
    {
        platform::ui::userPrompts().messageBox(text, "KORVAL");
        auto answer = platform::ui::userPrompts().inputBox("Confidence?", "KORVAL");
        return answer ? *answer : "cancelled";
    }
};

class Script : public test::HostFixture {
protected:
    void SetUp() override
    {
        HostFixture::SetUp();
        m_classes = platform::automation::ClassRegistry();
        brevant::registerClasses(m_classes);
        m_classes.add("Test.Probe", [] { return std::make_shared<Probe>(); });
        m_prompts = std::make_shared<platform::ui::ScriptedPrompts>();
        platform::ui::installUserPrompts(m_prompts);
    }
    void TearDown() override
    {
        platform::ui::installUserPrompts(nullptr);
        HostFixture::TearDown();
    }

    json run(ScriptRunner& runner, const std::string& line) { return runner.executeLine(line); }

    platform::automation::ClassRegistry m_classes;
    std::shared_ptr<platform::ui::ScriptedPrompts> m_prompts;
};

TEST_F(Script, CallReturnsResultAndByReferenceValuesInOrder)
{
    ScriptRunner runner(m_classes, m_prompts);
    EXPECT_TRUE(run(runner, R"({"new": "Test.Probe", "as": "p"})").at("ok"));
    const json out = run(runner, R"({"call": "p.Fill", "args": ["eqsrsoil", {"i2": 0}, ""]})");
    EXPECT_EQ(out.at("result"), true);
    EXPECT_EQ(out.at("byref"), json::parse(R"([8, "filled eqsrsoil"])"));
    EXPECT_EQ(out.at("messages"), json::array());
}

TEST_F(Script, ArgumentsAreTyped)
{
    ScriptRunner runner(m_classes, m_prompts);
    run(runner, R"({"new": "Test.Probe", "as": "p"})");
    const std::map<std::string, std::string> kinds = {
        {R"("SOIL")", "String"},
        {"2", "Double"},
        {R"({"i2": 2})", "Integer"},
        {R"({"i4": 2})", "Long"},
        {R"({"r8": 2})", "Double"},
        {"true", "Boolean"},
        {"null", "Null"},
        {R"({"empty": true})", "Empty"},
        {R"({"date": "2026-11-23"})", "Date"},
        {R"({"collection": ["SOIL", "LIQF"]})", "Collection"},
        {R"([1, 2])", "Variant()"},
        {R"({"array2": [[1, 2], [3, 4]]})", "Variant()"},
        {R"({"ref": "map"})", "Map"}};
    for (const auto& [arg, kind] : kinds) {
        const json out = run(runner, R"({"call": "p.Kind", "args": [)" + arg + "]}");
        EXPECT_EQ(out.at("result"), kind) << arg << " -> " << out.dump();
    }
}

TEST_F(Script, ALineThatIsNotUtf8IsThatLinesErrorAndTheOthersRun)
{
    ScriptRunner runner(m_classes, m_prompts);
    std::istringstream in("{\"new\": \"Test.Probe\", \"as\": \"p\"}\n"
                          "{\"call\": \"p.Kind\", \"args\": [\"\xff\xfe\"]}\n"
                          "{\"call\": \"p.Kind\", \"args\": [1]}\n");
    std::ostringstream out;
    EXPECT_EQ(runner.run(in, out), 1);
    std::istringstream lines(out.str());
    std::vector<json> results;
    for (std::string line; std::getline(lines, line);) {
        results.push_back(json::parse(line));
    }
    ASSERT_EQ(results.size(), 3u);
    EXPECT_FALSE(results[1].at("ok"));
    EXPECT_TRUE(results[2].at("ok"));
}

TEST_F(Script, ALineNestedTooDeeplyIsThatLinesError)
{
    ScriptRunner runner(m_classes, m_prompts);
    const std::string deep = R"({"new": "Test.Probe", "as": )" + std::string(70000, '[') +
                             std::string(70000, ']') + "}";
    const json out = run(runner, deep);
    EXPECT_FALSE(out.at("ok"));
    EXPECT_NE(out.at("error").at("description").get<std::string>().find("deeper than 512"),
              std::string::npos);
    EXPECT_TRUE(run(runner, R"({"new": "Test.Probe", "as": "p"})").at("ok"));
}

TEST_F(Script, ErrorsCarryNumberHexSourceAndDescription)
{
    ScriptRunner runner(m_classes, m_prompts);
    run(runner, R"({"new": "Brevant.EqDataMaps", "as": "dm"})");
    const json missing = run(runner, R"({"call": "dm.ClipHazardDataMap", "args": []})");
    EXPECT_FALSE(missing.at("ok"));
    EXPECT_EQ(missing.at("error").at("number"), 438);
    EXPECT_EQ(missing.at("error").at("hex"), "0x000001B6");
    EXPECT_EQ(missing.at("error").at("source"), "EqDataMaps");
    EXPECT_NE(missing.at("error")
                  .at("description")
                  .get<std::string>()
                  .find("EqDataMaps.ClipHazardDataMap"),
              std::string::npos);

    for (const char* bad :
         {"not json", R"({"describe": "nothing"})", R"({"render": 5})", R"({"call": "nobody.X"})", R"({"call": "dm"})",
          R"({"new": "Brevant.Nothing"})", R"({"set": "dm.m_pMap"})", "[1, 2]"}) {
        const json out = run(runner, bad);
        EXPECT_FALSE(out.at("ok")) << bad;
        EXPECT_FALSE(out.at("error").at("description").get<std::string>().empty()) << bad;
    }
}

TEST_F(Script, GetAndSetTheSharedMap)
{
    ScriptRunner runner(m_classes, m_prompts);
    run(runner, R"({"new": "Brevant.EqPoint", "as": "pt"})");
    run(runner, R"({"new": "Brevant.EqPolyGon", "as": "pg"})");
    EXPECT_EQ(run(runner, R"({"get": "pg.m_pMap"})").at("result"), nullptr);
    EXPECT_TRUE(run(runner, R"({"set": "pt.m_pMap", "value": {"ref": "map"}})").at("ok"));
    EXPECT_EQ(run(runner, R"({"get": "pg.m_pMap"})").at("result"),
              json::parse(R"({"object": "Map", "ref": "map"})"));
    const json wrong = run(runner, R"({"set": "pt.m_pMap", "value": "a map"})");
    EXPECT_EQ(wrong.at("error").at("number"), 13);
}

TEST_F(Script, MessagesAreReportedAndAnswersQueued)
{
    ScriptRunner runner(m_classes, m_prompts);
    run(runner, R"({"new": "Test.Probe", "as": "p"})");
    EXPECT_TRUE(run(runner, R"({"answers": ["80"]})").at("ok"));
    const json out = run(runner, R"({"call": "p.Warn", "args": ["Range too wide"]})");
    EXPECT_EQ(out.at("result"), "80");
    EXPECT_EQ(out.at("messages"),
              json::parse(R"([{"title": "KORVAL", "text": "Range too wide"}])"));
    EXPECT_EQ(run(runner, R"({"call": "p.Warn", "args": ["again"]})").at("result"), "cancelled");
}

TEST_F(Script, FailingInitReturnsTheLibraryCode)
{
    removeSetting("General", "CurrentRegionID");
    ScriptRunner runner(m_classes, m_prompts);
    const json out = run(runner, R"({"new": "Brevant.EqPoint", "as": "pt"})");
    EXPECT_FALSE(out.at("ok"));
    EXPECT_EQ(out.at("error").at("hex"), "0x8004060C");
    EXPECT_EQ(out.at("error").at("number"), -2147219956);
    EXPECT_EQ(out.at("error").at("description"), "The map engine failed in Init");
}

TEST_F(Script, RunSkipsBlankAndCommentLinesAndCountsFailures)
{
    ScriptRunner runner(m_classes, m_prompts);
    std::istringstream in("# make one\n\n{\"new\": \"Brevant.EqPolyGon\", \"as\": \"pg\"}\n"
                          "{\"call\": \"pg.Missing\"}\n{\"get\": \"pg.m_pMap\"}\n");
    std::ostringstream out;
    EXPECT_EQ(runner.run(in, out), 1);
    std::istringstream lines(out.str());
    std::string line;
    std::vector<bool> ok;
    while (std::getline(lines, line)) {
        ok.push_back(json::parse(line).at("ok").get<bool>());
    }
    EXPECT_EQ(ok, (std::vector<bool>{true, false, true}));
}

} // namespace
} // namespace brevant::app
