#include "host/local/HostBuilder.h"

#include "host/local/DefaultCatalogues.h"
#include "host/local/HostErrors.h"
#include "host/local/HostRoot.h"
#include "host/local/MessageTexts.h"
#include "host/local/SchemaWriter.h"
#include "host/local/Schemas.h"

namespace brevant::host::local {

namespace fs = std::filesystem;

void initHost(const fs::path& root)
{
    std::error_code ec;
    const bool exists = fs::exists(root, ec);
    if (exists && (!fs::is_directory(root, ec) || !fs::is_empty(root, ec))) {
        hostError(HostError::InvalidInput,
                  root.string() + " is not an empty folder; a host root needs one of its own");
    }
    const fs::path target = fs::absolute(root).lexically_normal();
    std::string stagingName = ".";
    stagingName += target.filename().string();
    stagingName += ".partial";
    const fs::path staging = target.parent_path() / stagingName;
    fs::remove_all(staging);
    try {
        HostRoot host(staging);
        host.save();
        const fs::path system(host.systemDataFolder());
        for (const auto& schema : hostDatabases()) {
            // A state's databases come with the state's data, a region's with the region.
            if (schema.perState || schema.folder == HostFolder::Region) {
                continue;
            }
            const fs::path folder(schema.folder == HostFolder::State    ? host.stateDataFolder()
                                  : schema.folder == HostFolder::System ? host.systemDataFolder()
                                                                        : host.scenarioFolder());
            const fs::path file = folder / schema.fileName;
            fs::create_directories(file.parent_path());
            createDatabase(schema, file);
        }
        MessageTexts::save(system / "messages.json", MessageTexts::defaults());
        writeDefaultSymbols(system);
        writeDefaultClassSettings(system);
        writeLogo(system);
        if (exists) {
            fs::remove(target);
        }
        fs::rename(staging, target);
    } catch (...) {
        fs::remove_all(staging, ec);
        throw;
    }
}

} // namespace brevant::host::local
