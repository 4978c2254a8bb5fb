#include "host/HostServices.h"

#include "platform/automation/AutomationError.h"
#include "platform/automation/ErrorNumbers.h"

#include <utility>

namespace brevant::host {

namespace {
std::shared_ptr<HostServices>& installedServices()
{
    static std::shared_ptr<HostServices> services;
    return services;
}
} // namespace

void installHostServices(std::shared_ptr<HostServices> services)
{
    installedServices() = std::move(services);
}

HostServices& hostServices()
{
    auto& services = installedServices();
    if (!services) {
        throw platform::automation::AutomationError(
            platform::automation::ErrorNumber::CannotCreateObject, "Brevant",
            "No host is installed");
    }
    return *services;
}

} // namespace brevant::host
