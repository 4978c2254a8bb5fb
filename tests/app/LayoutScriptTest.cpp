#include "host/local/HostRoot.h"
#include "host/local/RegionDatabase.h"
#include "samplehost/SampleHost.h"
#include "platform/tabular/SqliteDatabase.h"
#include "support/HostFixture.h"
#include "support/ScriptRun.h"

#include <QImage>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace brevant::app {
namespace {

namespace fs = std::filesystem;
using json = nlohmann::ordered_json;
using platform::tabular::SqliteDatabase;

using test::runScript;

// The host's query tool hands a recordset of identifiers to ApplySelection; a script builds
// it from a query on the region database and lays out the page through the "app" object.
TEST(LayoutScript, RecordsetsSelectAndTheHostDocumentIsLaidOut)
{
    test::TempDir dir;
    const fs::path root = dir.path() / "host";
    samplehost::writeSampleHost(root, samplehost::SampleSize::Small, 3);
    const auto host = host::local::HostRoot::load(root);
    const fs::path database = host.regionDatabasePath(host.currentRegion());
    std::string tract;
    int schools = 0;
    {
        SqliteDatabase db(database.string(), SqliteDatabase::Mode::ReadOnly);
        SqliteDatabase::Statement query(
            db, "SELECT Tract, count(*) FROM hzSchool GROUP BY Tract ORDER BY 2 DESC LIMIT 1");
        ASSERT_TRUE(query.step());
        tract = query.text(0);
        schools = static_cast<int>(query.int64(1));
    }
    ASSERT_GT(schools, 1);
    // The region's current earthquake scenario names the page.
    host::local::RegionDatabase(database).write("PESH", "ScenarioID", "2");
    const fs::path png = dir.path() / "page.png";
    // The sample writes the server rows in the order of the features, so a row's number is
    // its feature's identifier.
    const auto results = runScript(root, R"({"add-layer": "ef.mdb:hzSchool", "name": "Schools"}
{"new": "Brevant.EqCustomMap", "as": "cm"}
{"call": "cm.UpdateQuerytoolTable", "args": [{"ref": "app"}]}
{"call": "cm.ApplySelection", "args": [{"i4": 0}, "Schools", {"i4": 0}, {"recordset": "select rowid from hzSchool where Tract = ')" +
                                                   tract + R"('"}]}
{"describe": "map"}
{"call": "cm.ApplySelection", "args": [{"i4": 0}, "Schools", {"i4": 0}, {"recordset": "select rowid from hzSchool where 0"}]}
{"call": "cm.ApplySelection", "args": [{"i4": 0}, "Schools", {"i4": 0}, {"recordset": "select rowid from nowhere"}]}
{"call": "cm.CreateLayoutView", "args": [{"ref": "app"}]}
{"describe": "layout"}
{"export-layout": ")" + png.string() + R"("}
{"get": "app.PageLayout"}
)");
    ASSERT_EQ(results.size(), 11u);
    for (std::size_t i : {0u, 1u, 2u, 3u, 4u, 5u, 7u, 8u, 9u, 10u}) {
        EXPECT_TRUE(results[i].at("ok").get<bool>()) << i << ": " << results[i].dump();
    }
    EXPECT_EQ(results[4].at("result").at("layers")[0].at("selectionCount"), schools);

    ASSERT_EQ(results[5].at("messages").size(), 1u);
    EXPECT_EQ(results[5].at("messages")[0].at("text"), "No records could be found for the query");
    EXPECT_EQ(results[5].at("messages")[0].at("title"), "KORVAL");

    EXPECT_FALSE(results[6].at("ok").get<bool>()) << "a query the database cannot run";
    EXPECT_NE(results[6].at("error").at("description").get<std::string>().find("nowhere"),
              std::string::npos)
        << results[6].dump();

    const json& page = results[8].at("result");
    EXPECT_EQ(page.at("orientation"), "landscape");
    std::vector<std::string> kinds;
    std::vector<std::string> texts;
    for (const auto& element : page.at("elements")) {
        kinds.push_back(element.at("kind").get<std::string>());
        if (element.contains("text")) {
            texts.push_back(element.at("text").get<std::string>());
        }
    }
    EXPECT_NE(std::find(texts.begin(), texts.end(), "Hazard Scenario  : Scenario 2"), texts.end())
        << page.dump();
    for (const char* kind : {"map frame", "legend", "north arrow", "picture", "text"}) {
        EXPECT_NE(std::find(kinds.begin(), kinds.end(), kind), kinds.end()) << kind;
    }
    EXPECT_FALSE(QImage(QString::fromStdString(png.string())).isNull());
    EXPECT_EQ(results[10].at("result").at("ref"), "layout") << "the application holds the page";
}

} // namespace
} // namespace brevant::app
