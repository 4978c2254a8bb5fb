#include "host/local/LocalRegionContextService.h"

#include "host/local/HostRoot.h"
#include "host/local/MessageTexts.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/QueryFilter.h"
#include "platform/geodatabase/SqlQuote.h"
#include "platform/geodatabase/Table.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/ui/UserPrompts.h"

#include <filesystem>

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

std::string LocalRegionContextService::GetRegionName()
{
    return HostRoot::load(m_root).currentRegion();
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

std::string LocalRegionContextService::LookupState(const std::string& stateCode)
{
    namespace gdb = platform::geodatabase;
    auto states =
        gdb::Workspace::open(HostRoot::load(m_root).stateDataFolder() + "syboundary.mdb", true)
            .openTable("syState");
    gdb::Cursor cursor =
        states->search(gdb::QueryFilter::where("StateFips = " + gdb::sqlQuoted(stateCode, '\'')));
    gdb::Row row;
    if (!cursor.next(row)) {
        return {};
    }
    const int name = row.fields().findField("StateName");
    const auto& value = row.value(name);
    return value.isNull() || value.isEmpty() ? std::string() : value.toString();
}

void LocalRegionContextService::ShowFileDialog(const std::string& startFolder,
                                               const std::string& title,
                                               const std::string& extension, int32_t& result,
                                               std::string& path)
{
    platform::ui::FileDialogRequest request;
    request.mode = platform::ui::FileDialogMode::Open;
    request.startFolder = startFolder;
    request.title = title;
    request.extension = extension;
    const auto chosen = platform::ui::userPrompts().fileDialog(request);
    if (!chosen) {
        result = 0;
        path.clear();
        return;
    }
    path = *chosen;
    const std::string wanted = "." + extension;
    result = extension.empty() || platform::automation::equalsIgnoreCase(
                                      std::filesystem::path(path).extension().string(), wanted)
                 ? 1
                 : -1;
}

} // namespace brevant::host::local
