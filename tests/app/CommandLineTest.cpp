#include "support/Executable.h"
#include "support/HostFixture.h"

#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

namespace brevant::app {
namespace {

using json = nlohmann::ordered_json;

using test::Outcome;
const auto brevant = test::runBrevant;

std::vector<json> lines(const std::string& text)
{
    std::vector<json> out;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        out.push_back(json::parse(line));
    }
    return out;
}

class Cli : public test::HostFixture {
protected:
    std::string writeScript(const std::string& text)
    {
        const auto path = root() / "script.jsonl";
        std::ofstream(path) << text;
        return path.string();
    }
};

TEST_F(Cli, ScriptCreatesEveryClass)
{
    std::string script;
    for (const char* cls : {"EqPoint", "EqPolyLine", "EqDataMaps", "EqPolyGon", "EqCustomMap",
                            "EQMapSelDlg", "RegionExpImp", "EqOpenDocument", "EqThmMap"}) {
        script += json{{"new", std::string("Brevant.") + cls}, {"as", cls}}.dump() + "\n";
    }
    const Outcome run = brevant("script --host " + root().string() + " " + writeScript(script));
    EXPECT_EQ(run.status, 0) << run.out;
    const auto results = lines(run.out);
    ASSERT_EQ(results.size(), 9u);
    for (const auto& result : results) {
        EXPECT_TRUE(result.at("ok")) << result.dump();
        EXPECT_EQ(result.at("result").at("ref"), result.at("result").at("object"));
    }
}

TEST_F(Cli, FailingStatementGivesJsonErrorAndNonZeroStatus)
{
    removeSetting("General", "AggLevel");
    const Outcome run = brevant("script --host " + root().string() + " " +
                                writeScript("{\"new\": \"Brevant.EqPoint\", \"as\": \"pt\"}\n"));
    EXPECT_EQ(run.status, 1);
    const auto results = lines(run.out);
    ASSERT_EQ(results.size(), 1u);
    EXPECT_EQ(results[0].at("error").at("hex"), "0x8004060C");
    EXPECT_EQ(results[0].at("error").at("description"), "The map engine failed in Init");
}

TEST_F(Cli, CallPrintsOneResult)
{
    const Outcome ok = brevant("call --host " + root().string() + " Brevant.EqPolyGon m_pMap");
    EXPECT_EQ(ok.status, 0) << ok.out;
    EXPECT_EQ(lines(ok.out).at(0).at("result"), nullptr);

    const Outcome missing =
        brevant("call --host " + root().string() + " Brevant.EqPolyGon Nothing 1");
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(lines(missing.out).at(0).at("error").at("number"), 438);
}

TEST_F(Cli, BadHostRootNamesTheFile)
{
    std::filesystem::remove(root() / "host.json");
    const Outcome noFile = brevant("call --host " + root().string() + " Brevant.EqPoint m_pMap");
    EXPECT_EQ(noFile.status, 1);
    EXPECT_NE(
        lines(noFile.out).at(0).at("error").at("description").get<std::string>().find("host.json"),
        std::string::npos);

    std::ofstream(root() / "host.json") << "{\"currentRegion\": 7";
    const Outcome malformed = brevant("call --host " + root().string() + " Brevant.EqPoint m_pMap");
    EXPECT_EQ(malformed.status, 1);
    EXPECT_NE(lines(malformed.out)
                  .at(0)
                  .at("error")
                  .at("description")
                  .get<std::string>()
                  .find("is not valid JSON"),
              std::string::npos);
}

TEST_F(Cli, UsageAndHelp)
{
    for (const char* args : {"--help", "help", "call --help", "script --help"}) {
        const Outcome run = brevant(args);
        EXPECT_EQ(run.status, 0) << args;
        EXPECT_NE(run.out.find("Usage: brevant"), std::string::npos) << args;
    }
    EXPECT_EQ(brevant("").status, 2);
    EXPECT_EQ(brevant("frobnicate").status, 2);
    EXPECT_EQ(brevant("script").status, 2) << "--host is required";
    EXPECT_EQ(brevant("call --host " + root().string() + " Brevant.EqPoint").status, 2);
}

} // namespace
} // namespace brevant::app
