#pragma once

#include "host/HostServices.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <string>

namespace brevant::test {

/// A temporary folder removed at the end of the test.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

/// Counts the host objects the library creates, passing every request to the reference host.
class CountingHostServices;

/// A reference host root with one study region "Testville" (number 1, hazard flags
/// earthquake and hurricane), settings General/AggLevel 2 and General/CurrentRegionID 1, and
/// the default message texts; installed as the process's host with a fresh context.
class HostFixture : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /// Writes a setting of the current region.
    void setSetting(const std::string& section, const std::string& key, const std::string& value);
    /// Removes a setting of the current region.
    void removeSetting(const std::string& section, const std::string& key);
    /// Adds a region (with its region.sqlite and the two General settings) to host.json.
    void addRegion(const std::string& name, int number, bool earthquake, bool flood,
                   bool hurricane);
    void setCurrentRegion(const std::string& name);
    std::string regionFolder(const std::string& name = "Testville") const;
    std::string errorLog(const std::string& name = "Testville") const;
    /// Text of a file, "" when missing.
    static std::string readFile(const std::filesystem::path& path);

    std::filesystem::path root() const { return m_dir.path(); }
    /// How often the library asked the host for each kind of object.
    const std::map<std::string, int>& created() const;

private:
    TempDir m_dir;
    std::shared_ptr<CountingHostServices> m_services;
};

} // namespace brevant::test
