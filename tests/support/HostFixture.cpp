#include "support/HostFixture.h"

#include "context/StudyRegionContext.h"
#include "host/GisDataService.h"
#include "host/GisUtilityService.h"
#include "host/GridSettingsService.h"
#include "host/InventoryCatalogService.h"
#include "host/ProgressDialog.h"
#include "host/RegionContextService.h"
#include "host/RegionHazardService.h"
#include "host/RegionSelectionStore.h"
#include "host/RegionSettingsStore.h"
#include "host/ScenarioService.h"
#include "host/SymbolCatalog.h"
#include "host/ThematicClassSettings.h"
#include "host/UserMapRegistry.h"
#include "host/local/HostRoot.h"
#include "host/local/LocalHostServices.h"
#include "host/local/MessageTexts.h"
#include "host/local/RegionDatabase.h"
#include "platform/tabular/SqliteDatabase.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace brevant::test {

namespace fs = std::filesystem;
using host::local::HostRoot;
using host::local::RegionDatabase;

TempDir::TempDir()
{
    std::string pattern = (fs::temp_directory_path() / "brevant-test-XXXXXX").string();
    if (!mkdtemp(pattern.data())) {
        throw std::runtime_error("cannot create a temporary folder");
    }
    m_path = pattern;
}

TempDir::~TempDir()
{
    std::error_code ec;
    // Tests make folders read-only; give the permissions back so everything can go.
    for (auto it = fs::recursive_directory_iterator(m_path, ec);
         it != fs::recursive_directory_iterator(); it.increment(ec)) {
        fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ec);
    }
    fs::permissions(m_path, fs::perms::owner_all, fs::perm_options::add, ec);
    fs::remove_all(m_path, ec);
}

class CountingHostServices : public host::HostServices {
public:
    explicit CountingHostServices(const fs::path& root) : m_host(root) {}

    std::map<std::string, int> counts;

#define BREVANT_COUNTED(Service)                                                                   \
    std::shared_ptr<host::Service> create##Service() override                                      \
    {                                                                                              \
        ++counts[#Service];                                                                        \
        return m_host.create##Service();                                                           \
    }
    BREVANT_COUNTED(RegionContextService)
    BREVANT_COUNTED(RegionSettingsStore)
    BREVANT_COUNTED(GisDataService)
    BREVANT_COUNTED(RegionHazardService)
    BREVANT_COUNTED(RegionSelectionStore)
    BREVANT_COUNTED(InventoryCatalogService)
    BREVANT_COUNTED(GisUtilityService)
    BREVANT_COUNTED(UserMapRegistry)
    BREVANT_COUNTED(ScenarioService)
    BREVANT_COUNTED(ProgressDialog)
    BREVANT_COUNTED(GridSettingsService)
    BREVANT_COUNTED(SymbolCatalog)
    BREVANT_COUNTED(ThematicClassSettings)
#undef BREVANT_COUNTED

private:
    host::local::LocalHostServices m_host;
};

void HostFixture::SetUp()
{
    HostRoot host(root());
    host.save();
    host::local::MessageTexts::save(fs::path(host.systemDataFolder()) / "messages.json",
                                    host::local::MessageTexts::defaults());
    addRegion("Testville", 1, true, false, true);
    setCurrentRegion("Testville");
    m_services = std::make_shared<CountingHostServices>(root());
    host::installHostServices(m_services);
    context::resetStudyRegionContext();
}

void HostFixture::TearDown()
{
    context::resetStudyRegionContext();
    host::installHostServices(nullptr);
}

void HostFixture::addRegion(const std::string& name, int number, bool earthquake, bool flood,
                            bool hurricane)
{
    auto host = HostRoot::load(root());
    host.putRegion({name, number, {earthquake, flood, hurricane}});
    host.save();
    RegionDatabase::create(host.regionDatabasePath(name));
    RegionDatabase db(host.regionDatabasePath(name));
    db.write("General", "AggLevel", "2");
    db.write("General", "CurrentRegionID", std::to_string(number));
}

void HostFixture::setCurrentRegion(const std::string& name)
{
    auto host = HostRoot::load(root());
    host.setCurrentRegion(name);
    host.save();
}

void HostFixture::setSetting(const std::string& section, const std::string& key,
                             const std::string& value)
{
    const auto host = HostRoot::load(root());
    RegionDatabase(host.regionDatabasePath(host.currentRegion())).write(section, key, value);
}

void HostFixture::removeSetting(const std::string& section, const std::string& key)
{
    const auto host = HostRoot::load(root());
    platform::tabular::SqliteDatabase db(host.regionDatabasePath(host.currentRegion()).string(),
                                         platform::tabular::SqliteDatabase::Mode::ReadWrite);
    platform::tabular::SqliteDatabase::Statement remove(
        db, "DELETE FROM Settings WHERE Section = ?1 AND Key = ?2");
    remove.bind(1, section).bind(2, key);
    remove.step();
}

std::string HostFixture::regionFolder(const std::string& name) const
{
    return HostRoot::load(root()).regionFolder(name);
}

std::string HostFixture::errorLog(const std::string& name) const
{
    return readFile(regionFolder(name) + "EqErrorLog.txt");
}

std::string HostFixture::readFile(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

const std::map<std::string, int>& HostFixture::created() const
{
    return m_services->counts;
}

} // namespace brevant::test
