#include "app/AdminCommands.h"
#include "support/HostFixture.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace brevant::app {
namespace {

namespace fs = std::filesystem;

class AdminCommands : public ::testing::Test {
protected:
    int run(std::vector<std::string> args)
    {
        m_out.str({});
        m_err.str({});
        return runAdmin(args, m_out, m_err);
    }

    std::string host() const { return (m_dir.path() / "host").string(); }
    std::string file(const std::string& name) const { return (m_dir.path() / name).string(); }

    test::TempDir m_dir;
    std::ostringstream m_out;
    std::ostringstream m_err;
};

TEST_F(AdminCommands, FromAnEmptyHostToARegionWithAMap)
{
    ASSERT_EQ(run({"host", "init", host()}), 0) << m_err.str();
    std::ofstream(file("area.geojson")) << R"({"type": "FeatureCollection", "features": [
        {"type": "Feature", "properties": {"Tract": "41051000100"}, "geometry": {"type": "Polygon",
         "coordinates": [[[-123,45],[-122,45],[-122,46],[-123,46],[-123,45]]]}}]})";
    ASSERT_EQ(run({"region", "create", "--host", host(), "Portland", "--boundary",
                   file("area.geojson"), "--tracts", file("area.geojson")}),
              0)
        << m_err.str();
    EXPECT_EQ(m_out.str().rfind("region create: Portland (region 1, current): 1 tracts", 0), 0u)
        << m_out.str();
    ASSERT_EQ(run({"region", "list", "--host", host()}), 0);
    EXPECT_EQ(m_out.str().rfind("Portland\t1\tcurrent\t", 0), 0u) << m_out.str();

    EXPECT_EQ(run({"map", "register", "--host", host(), "SOIL", file("area.geojson"), "--value",
                   "Q"}),
              1);
    EXPECT_NE(m_err.str().find("\"Q\" is not a value of SOIL (soil (site) class, letters A to E)"),
              std::string::npos)
        << m_err.str();
    ASSERT_EQ(run({"map", "register", "--host", host(), "SOIL", file("area.geojson"), "--value",
                   "C"}),
              0)
        << m_err.str();
    ASSERT_EQ(run({"map", "list", "--host", host(), "--region", "portland"}), 0);
    EXPECT_EQ(m_out.str().rfind("SOIL\tUserMaps/SOIL.mdb:", 0), 0u) << m_out.str();

    EXPECT_EQ(run({"inventory", "add", "--host", host(), "hzSchool", "--kind", "P"}), 0)
        << m_err.str();
    EXPECT_NE(m_out.str().find("hzSchool in ef.mdb of Portland: 0 features"), std::string::npos)
        << m_out.str();
}

TEST_F(AdminCommands, UsageAndInputErrors)
{
    EXPECT_EQ(run({"region"}), 2);
    EXPECT_NE(m_err.str().find("missing the action"), std::string::npos);
    EXPECT_EQ(run({"region", "create", "--host", host(), "--boundary", "b"}), 2);
    EXPECT_NE(m_err.str().find("missing NAME"), std::string::npos) << m_err.str();
    EXPECT_EQ(run({"map", "register", "--host", host(), "SOIL", "x", "--value", "A",
                   "--value-field", "F"}),
              2);
    EXPECT_EQ(run({"inventory", "add", "--host", host(), "hzSchool", "--kind", "Q"}), 2);
    EXPECT_EQ(run({"region", "--help"}), 0);
    EXPECT_NE(m_out.str().find("Usage: brevant region create"), std::string::npos);

    // Not a usage error: the data is wrong, and the message says which.
    ASSERT_EQ(run({"host", "init", host()}), 0);
    EXPECT_EQ(run({"host", "init", host()}), 1) << "a host root is not overwritten";
    EXPECT_EQ(run({"region", "create", "--host", host(), "X", "--boundary", file("none.shp"),
                   "--tracts", file("none.shp")}),
              1);
    EXPECT_NE(m_err.str().find("none.shp does not exist"), std::string::npos) << m_err.str();
}

} // namespace
} // namespace brevant::app
