#include "context/ErrorTrap.h"

#include "context/EqErrorhandle.h"
#include "platform/automation/ErrorNumbers.h"

namespace brevant::context {

platform::automation::AutomationError recordError(std::string_view tag, int32_t code,
                                                  std::exception_ptr error)
{
    const auto caught = platform::automation::toAutomationError(error);
    std::string source = caught.source();
    int32_t number = caught.number();
    std::string message(tag);
    const std::string description = caught.description();
    WriteErrorRecord(number, source, description, message, code);
    return platform::automation::AutomationError(number, source, message);
}

platform::automation::AutomationError chainError(std::string_view tag, std::exception_ptr error)
{
    const auto caught = platform::automation::toAutomationError(error);
    int32_t number = caught.number();
    std::string message(tag);
    WriteErrorRecord(number, caught.source(), caught.description(), message,
                     platform::automation::LibraryCode::Procedure);
    return platform::automation::AutomationError(caught.number(), caught.source(),
                                                 std::string(tag));
}

} // namespace brevant::context
