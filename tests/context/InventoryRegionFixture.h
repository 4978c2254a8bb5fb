#pragma once

#include "platform/automation/AutomationError.h"
#include "platform/automation/Variant.h"
#include "support/HostFixture.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace brevant::platform::carto {
class Map;
}
namespace brevant::platform::geodatabase {
class FeatureClass;
class Table;
} // namespace brevant::platform::geodatabase
namespace brevant::platform::ui {
class ScriptedPrompts;
}

namespace brevant::test {

/// One inventory point: identifier, place and tract.
struct Site {
    std::string id;
    double x = 0.0;
    double y = 0.0;
    std::string tract = "06001400100";
};

/// HostFixture with the study region opened, a current map, scripted prompts and the default
/// symbol catalogue, and helpers for catalogued inventory classes and their server tables.
class InventoryRegionFixture : public HostFixture {
protected:
    void SetUp() override;
    void TearDown() override;

    /// Adds point class `name` with the catalogue's fields to `database` of the region folder,
    /// one feature per site, catalogues it and creates its (empty) server tables.
    std::shared_ptr<platform::geodatabase::FeatureClass>
    addPointInventory(const std::string& name, const std::vector<Site>& sites,
                      const std::string& database = "trn.mdb");
    /// Runs SQL on the region database.
    void executeSql(const std::string& sql) const;
    /// The text of one value of the region database's first row that `query` selects;
    /// "<null>" for null, "<none>" without a row.
    std::string sqlValue(const std::string& query) const;

    /// A field's value in the feature with an identifier (field index 2).
    static platform::automation::Variant valueOf(const platform::geodatabase::Table& table,
                                                 const std::string& id, const std::string& field);

    std::shared_ptr<platform::carto::Map> m_map;
    std::shared_ptr<platform::ui::ScriptedPrompts> m_prompts;
};

/// Runs `body` and returns the AutomationError it raised (a failed expectation when none).
template <class Body> platform::automation::AutomationError errorOf(Body&& body)
{
    try {
        body();
    } catch (const platform::automation::AutomationError& e) {
        return e;
    }
    ADD_FAILURE() << "no error";
    return platform::automation::AutomationError(0, "", "");
}

} // namespace brevant::test
