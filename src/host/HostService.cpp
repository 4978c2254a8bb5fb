#include "host/HostService.h"

#include "platform/automation/AutomationError.h"
#include "platform/automation/ErrorNumbers.h"

#include <string>

namespace brevant::host {

void HostService::unsupported(std::string_view service, std::string_view operation)
{
    throw platform::automation::AutomationError(
        platform::automation::ErrorNumber::MemberNotFound, std::string(service),
        "The host does not provide " + std::string(service) + "." + std::string(operation));
}

} // namespace brevant::host
