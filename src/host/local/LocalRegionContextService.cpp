#include "host/local/LocalRegionContextService.h"

#include "host/local/HostRoot.h"
#include "host/local/MessageTexts.h"

namespace brevant::host::local {

std::string LocalRegionContextService::GetStateDataFolder()
{
    return HostRoot::load(m_root).stateDataFolder();
}

std::string LocalRegionContextService::GetRegionFolder()
{
    const auto host = HostRoot::load(m_root);
    return host.regionFolder(host.currentRegion());
}

std::string LocalRegionContextService::GetSystemDataFolder()
{
    return HostRoot::load(m_root).systemDataFolder();
}

std::string LocalRegionContextService::GetScenarioFolder()
{
    return HostRoot::load(m_root).scenarioFolder();
}

std::string LocalRegionContextService::GetRegionsFolder()
{
    return HostRoot::load(m_root).regionsFolder();
}

std::string LocalRegionContextService::GetMessageText(int32_t code)
{
    return MessageTexts::lookup(HostRoot::load(m_root).systemDataFolder() + "messages.json", code);
}

std::string LocalRegionContextService::GetRegionDatabaseName()
{
    const auto host = HostRoot::load(m_root);
    return "sqlite:" + host.regionDatabasePath(host.currentRegion()).string();
}

} // namespace brevant::host::local
